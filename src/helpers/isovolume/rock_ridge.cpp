// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/rock_ridge.h"

#include <array>
#include <string_view>
#include <utility>

#include "helpers/isovolume/iso_date.h"
#include "helpers/isovolume/iso_fields.h"
#include "helpers/isovolume/iso_names.h"

namespace kelvane::isovolume {
namespace {

/// The most areas one record may be spread over; as many as the kernel follows.
constexpr int kMostContinuations = 32;
/// The longest target of a symbolic link (PATH_MAX without its NUL).
constexpr std::size_t kMaximumTargetLength = 4095;

constexpr std::size_t kEntryHeader = 4;

/// One entry: two letters, its length, its version, and the data behind these.
struct Entry {
  std::string_view signature;
  Bytes data;
};

struct Continuation {
  std::uint64_t block = 0;
  std::size_t offset = 0;
  std::size_t length = 0;
};

/// Carries the reading of one record through its entries.
class Interpreter {
 public:
  explicit Interpreter(RockRidge* out) : out_(*out) {}

  /// Reads the entries of one area. What is no entry ends it.
  void readArea(Bytes area);

  /// Where the record goes on, if the last area said so.
  std::optional<Continuation> takeContinuation() { return std::exchange(continuation_, {}); }

 private:
  using Handler = void (Interpreter::*)(Bytes);
  struct Known {
    std::string_view signature;
    std::size_t leastData;
    Handler handler;
  };
  static const std::array<Known, 10> kKnown;

  void sharingProtocol(Bytes data);
  void extensionReference(Bytes data);
  void continuation(Bytes data);
  void posixAttributes(Bytes data);
  void deviceNumber(Bytes data);
  void alternateName(Bytes data);
  void symbolicLink(Bytes data);
  void childLink(Bytes data);
  void relocated(Bytes data);
  void timeStamps(Bytes data);

  void linkComponent(std::uint8_t flags, std::string_view text);

  RockRidge& out_;
  std::optional<Continuation> continuation_;
  bool nameEnded_ = false;
  bool separatorDue_ = false;
};

const std::array<Interpreter::Known, 10> Interpreter::kKnown = {{
    {"PX", 32, &Interpreter::posixAttributes},
    {"TF", 1, &Interpreter::timeStamps},
    {"NM", 1, &Interpreter::alternateName},
    {"CE", 24, &Interpreter::continuation},
    {"SL", 1, &Interpreter::symbolicLink},
    {"CL", 8, &Interpreter::childLink},
    {"RE", 0, &Interpreter::relocated},
    {"PN", 16, &Interpreter::deviceNumber},
    {"SP", 3, &Interpreter::sharingProtocol},
    {"ER", 4, &Interpreter::extensionReference},
}};

void Interpreter::readArea(Bytes area) {
  while (area.size() >= kEntryHeader) {
    const std::size_t length = area[2];
    if (length < kEntryHeader || length > area.size()) return;
    const std::string_view signature(reinterpret_cast<const char*>(area.data()), 2);
    if (signature == "ST") return;
    const Bytes data = area.subspan(kEntryHeader, length - kEntryHeader);
    for (const Known& known : kKnown) {
      if (known.signature != signature) continue;
      if (data.size() >= known.leastData) (this->*known.handler)(data);
      break;
    }
    area = area.subspan(length);
  }
}

/// SP (SUSP, 5.3): check bytes, then the number of bytes to skip.
void Interpreter::sharingProtocol(Bytes data) {
  if (data[0] != 0xBE || data[1] != 0xEF) return;
  out_.sharingProtocol = true;
  out_.skip = data[2];
}

/// ER (SUSP, 5.5): lengths of identifier, descriptor and source, a version, then the identifier.
void Interpreter::extensionReference(Bytes data) {
  const std::size_t length = data[0];
  if (length > data.size() - 4) return;
  const std::string_view id(reinterpret_cast<const char*>(data.data()) + 4, length);
  if (id == "RRIP_1991A" || id == "IEEE_P1282" || id == "IEEE_1282") out_.extension = true;
}

/// CE (SUSP, 5.1): block, offset and length of the area in which the record goes on.
void Interpreter::continuation(Bytes data) {
  continuation_ = {.block = bothEndian32(data, 0),
                   .offset = bothEndian32(data, 8),
                   .length = bothEndian32(data, 16)};
}

/// PX (RRIP, 4.1.1): mode, links, user, group.
void Interpreter::posixAttributes(Bytes data) {
  out_.posix = {.mode = bothEndian32(data, 0),
                .links = bothEndian32(data, 8),
                .user = bothEndian32(data, 16),
                .group = bothEndian32(data, 24)};
}

/// PN (RRIP, 4.1.2)
void Interpreter::deviceNumber(Bytes data) {
  out_.device = {.high = bothEndian32(data, 0), .low = bothEndian32(data, 8)};
}

/// NM (RRIP, 4.1.4): flags (1: goes on in the next NM, 2: ".", 4: ".."), then a part of the name.
void Interpreter::alternateName(Bytes data) {
  const std::uint8_t flags = data[0];
  if (nameEnded_ || (flags & 0x06) != 0) return;
  out_.name.append(data.begin() + 1, data.end());
  // One part more than fits is kept, so that the cut can see which character it would split.
  nameEnded_ = (flags & 0x01) == 0 || out_.name.size() > kMaximumNameLength;
}

/// SL (RRIP, 4.1.3): flags, then components, each with flags, its length and its text.
void Interpreter::symbolicLink(Bytes data) {
  Bytes components = data.subspan(1);
  while (components.size() >= 2) {
    const std::size_t length = components[1];
    if (length > components.size() - 2) {
      out_.damagedTarget = true;
      return;
    }
    linkComponent(components[0], {reinterpret_cast<const char*>(components.data()) + 2, length});
    components = components.subspan(2 + length);
  }
}

/// Flags: 1 the component goes on in the next one, 2 ".", 4 "..", 8 the root.
void Interpreter::linkComponent(std::uint8_t flags, std::string_view text) {
  std::string& target = out_.target;
  if ((flags & 0x08) != 0) {
    target += '/';
    separatorDue_ = false;
    return;
  }
  if (separatorDue_) target += '/';
  if ((flags & 0x02) != 0) {
    target += '.';
  } else if ((flags & 0x04) != 0) {
    target += "..";
  } else {
    target += text;
  }
  separatorDue_ = (flags & 0x01) == 0;
  if (text.find('\0') != std::string_view::npos || target.size() > kMaximumTargetLength) {
    out_.damagedTarget = true;
    target.clear();
  }
}

/// CL (RRIP, 4.1.5.1)
void Interpreter::childLink(Bytes data) {
  out_.child = bothEndian32(data, 0);
}

/// RE (RRIP, 4.1.5.3)
void Interpreter::relocated(Bytes) {
  out_.relocated = true;
}

/// TF (RRIP, 4.1.6): flags say which dates follow, in the order of their bits; bit 7 that they are
/// long ones.
void Interpreter::timeStamps(Bytes data) {
  const std::uint8_t flags = data[0];
  const bool longForm = (flags & 0x80) != 0;
  const std::size_t size = longForm ? kLongDateSize : kShortDateSize;
  Bytes dates = data.subspan(1);
  for (unsigned bit = 0; bit < 7 && dates.size() >= size; ++bit) {
    if ((flags & 1u << bit) == 0) continue;
    const Bytes date = dates.first(size);
    dates = dates.subspan(size);
    const std::int64_t seconds = longForm ? secondsOfLongDate(date) : secondsOfShortDate(date);
    if (bit == 1) out_.modified = seconds;
    if (bit == 2) out_.accessed = seconds;
    // The creation comes first and stands in for the change of attributes where that is not
    // recorded.
    if (bit == 0 || bit == 3) out_.changed = seconds;
  }
}

}  // namespace

void RockRidge::clear() {
  std::string keptName = std::move(name);
  std::string keptTarget = std::move(target);
  *this = RockRidge();
  keptName.clear();
  keptTarget.clear();
  name = std::move(keptName);
  target = std::move(keptTarget);
}

void RockRidgeReader::read(Bytes area, RockRidge* out) {
  out->clear();
  Interpreter interpreter(out);
  if (area.size() > skip_) interpreter.readArea(area.subspan(skip_));
  for (int followed = 0; followed < kMostContinuations; ++followed) {
    const std::optional<Continuation> next = interpreter.takeContinuation();
    if (!next) break;
    buffer_.clear();
    if (!continuations_.read(next->block, next->offset, next->length, &buffer_)) break;
    interpreter.readArea(buffer_);
  }
}

}  // namespace kelvane::isovolume

// SPDX-License-Identifier: GPL-2.0-or-later
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "virtualdrive/tool/commands.h"
#include "virtualdrive/tool/first_session.h"
#include "virtualdrive/tool/session_writer.h"

namespace kelvane::virtualdrive::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestLabel = 32;
constexpr int kSectorsPerMegabyte = 512;

/// A folder beside the disc to be, in which it is made. Goes away with all that is in it.
class Workshop {
 public:
  explicit Workshop(const fs::path& disc)
      : path_((disc.parent_path() / ".kvdisc-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) path_.clear();
  }
  ~Workshop() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
  }
  Workshop(const Workshop&) = delete;
  Workshop& operator=(const Workshop&) = delete;

  explicit operator bool() const { return !path_.empty(); }
  fs::path disc() const { return fs::path(path_) / "disc"; }

 private:
  std::string path_;
};

/// The disc's own name where no label is given, cut at a character's boundary.
std::string labelFor(const CreateOptions& options) {
  if (options.label) return *options.label;
  auto name = options.disc.stem().string();
  if (name.size() <= kLongestLabel) return name;
  auto length = kLongestLabel;
  while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
  return name.substr(0, length);
}

bool isExisting(const fs::path& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored).type() != fs::file_type::not_found;
}

bool hasContent(const CreateOptions& options) {
  return options.from || !options.audio.empty();
}

bool prepare(const CreateOptions& options, const VirtualDrive& drive, const StopSignals& stop,
             std::string* error) {
  if (options.medium == kRestrictedOverwriteName && !formatForRestrictedOverwrite(drive, error)) {
    return false;
  }
  if (!hasContent(options)) return true;
  const auto end = options.closed ? SessionEnd::ForGood : SessionEnd::Appendable;
  const FirstContent content{options.from, labelFor(options), options.audio, options.audioPlace,
                             end};
  return writeFirstContent(drive, content, stop, error);
}

/// Makes a disc that is not blank out of sight and moves it to its place when it is whole.
int createPrepared(const CreateOptions& options, const fs::path& disc, const NewDisc& what) {
  std::string error;
  const StopSignals stop;
  const Workshop workshop(disc);
  if (!workshop) {
    complain("“" + disc.parent_path().string() + "” cannot be written to: " + std::strerror(errno) +
             ".");
    return kFailed;
  }
  if (!VirtualDrive::create(workshop.disc(), what, &error)) return complain(error), kFailed;
  const auto drive = VirtualDrive::open(workshop.disc(), &error);
  if (!drive || !prepare(options, *drive, stop, &error)) return complain(error), kFailed;
  if (renameat2(AT_FDCWD, workshop.disc().c_str(), AT_FDCWD, disc.c_str(), RENAME_NOREPLACE) != 0) {
    complain("“" + disc.string() + "” cannot be made: " + std::strerror(errno) + ".");
    return kFailed;
  }
  return kDone;
}

/// Audio, and a disc that is closed for good, are made of CDs only.
int checkCdOptions(const CreateOptions& options, MediumKind kind) {
  std::error_code ignored;
  for (const auto& file : options.audio) {
    if (fs::is_regular_file(file, ignored) && fs::file_size(file, ignored) > 0) continue;
    complain("“" + file.string() + "” is no file with sound.");
    return kFailed;
  }
  if (options.closed && !hasContent(options)) {
    complain("A disc without content cannot be closed.");
    return kWrongUsage;
  }
  if (isCd(kind) || (options.audio.empty() && !options.closed)) return kDone;
  complain("A " + options.medium + " can neither have audio tracks nor be closed here.");
  return kWrongUsage;
}

int checkOptions(const CreateOptions& options) {
  std::error_code ignored;
  if (options.from && !fs::is_directory(*options.from, ignored)) {
    complain("“" + options.from->string() + "” is no folder.");
    return kFailed;
  }
  if (options.label && (options.label->empty() || options.label->size() > kLongestLabel)) {
    complain("The name of a volume has 1 to 32 bytes.");
    return kWrongUsage;
  }
  if (isExisting(options.disc)) {
    complain("“" + options.disc.string() + "” exists already.");
    return kFailed;
  }
  return kDone;
}

}  // namespace

int createDisc(const CreateOptions& options) {
  const bool restrictedOverwrite = options.medium == kRestrictedOverwriteName;
  const auto kind = restrictedOverwrite ? MediumKind::DvdRw
                                        : mediumKindNamed(options.medium).value_or(MediumKind::CdR);
  const auto bounds = capacityBounds(kind);
  NewDisc what{kind, bounds.standard};
  if (options.capacityMegabytes) {
    const auto most = bounds.largest / kSectorsPerMegabyte;
    if (*options.capacityMegabytes < 1 || *options.capacityMegabytes > most) {
      complain("A " + options.medium + " holds 1 to " + std::to_string(most) + " MB.");
      return kWrongUsage;
    }
    what.capacitySectors = *options.capacityMegabytes * kSectorsPerMegabyte;
  }
  if (const int status = checkOptions(options); status != kDone) return status;
  if (const int status = checkCdOptions(options, kind); status != kDone) return status;
  // A trailing slash would leave the name empty.
  auto disc = fs::absolute(options.disc).lexically_normal();
  if (!disc.has_filename()) disc = disc.parent_path();
  if (hasContent(options) || restrictedOverwrite) return createPrepared(options, disc, what);
  std::string error;
  if (VirtualDrive::create(disc, what, &error)) return kDone;
  return complain(error), kFailed;
}

}  // namespace kelvane::virtualdrive::tool

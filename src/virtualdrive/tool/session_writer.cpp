// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/session_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "virtualdrive/big_endian.h"
#include "virtualdrive/state/drive_state.h"

namespace kelvane::virtualdrive::tool {
namespace {

bool check(const CommandResult& result, const char* what, std::string* error) {
  if (result.good()) return true;
  if (result.sense == kEndOfUserArea) {
    *error = "The disc is full.";
    return false;
  }
  std::array<char, 16> numbers{};
  std::snprintf(numbers.data(), numbers.size(), "%X/%02X/%02X", unsigned{result.sense.key},
                unsigned{result.sense.code}, unsigned{result.sense.qualifier});
  *error = "The drive refused " + std::string(what) + " (sense " + numbers.data() + ").";
  return false;
}

constexpr std::array<std::uint8_t, 6> kTestUnitReady{};

}  // namespace

bool SessionWriter::becomeReady(std::string* error) {
  // A change of the medium is told once.
  auto result = drive_.execute(kTestUnitReady, {}, {});
  if (!result.good()) result = drive_.execute(kTestUnitReady, {}, {});
  return check(result, "to become ready", error);
}

bool SessionWriter::setParameters(std::string* error) {
  constexpr std::size_t kHeaderBytes = 8;
  std::array<std::uint8_t, kHeaderBytes + WriteParameters::kBytes> list{};
  auto parameters = WriteParameters::standard();
  parameters.page[3] |= 0xC0;  // a further session may follow
  std::ranges::copy(parameters.page, list.begin() + kHeaderBytes);
  const std::array<std::uint8_t, 10> select{0x55, 0x10, 0, 0, 0, 0, 0, 0, list.size(), 0};
  return check(drive_.execute(select, {}, list), "the write parameters", error);
}

bool SessionWriter::begin(std::string* error) {
  if (!becomeReady(error) || !setParameters(error)) return false;
  std::array<std::uint8_t, 36> track{};
  const std::array<std::uint8_t, 10> ask{0x52, 1, 0, 0, 0, 0xFF, 0, 0, track.size(), 0};
  if (!check(drive_.execute(ask, track, {}), "to tell where to write", error)) return false;
  next_ = static_cast<Lba>(read32(track, 12));
  return true;
}

bool SessionWriter::write(std::span<const std::uint8_t> sectors, std::string* error) {
  const auto count = static_cast<unsigned>(sectors.size() / kSectorBytes);
  AnswerBytes block;
  block.u8(0x2A).u8(0).u32(static_cast<std::uint32_t>(next_)).u8(0).u16(count).u8(0);
  if (!check(drive_.execute(block.view(), {}, sectors), "to write", error)) return false;
  next_ += static_cast<Lba>(count);
  return true;
}

bool SessionWriter::close(std::string* error) {
  const std::array<std::uint8_t, 10> synchronize{0x35};
  const std::array<std::uint8_t, 10> closeSession{0x5B, 0, 0x02};
  return check(drive_.execute(synchronize, {}, {}), "to end the track", error) &&
         check(drive_.execute(closeSession, {}, {}), "to close the session", error);
}

}  // namespace kelvane::virtualdrive::tool

// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/session_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "virtualdrive/big_endian.h"
#include "virtualdrive/state/drive_state.h"

namespace kelvane::virtualdrive::tool {
namespace {

bool check(const CommandResult& result, const char* what, std::string* error) {
  if (result.good()) return true;
  if (result.sense == kEndOfUserArea || result.sense == kAddressOutOfRange) {
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

constexpr std::uint16_t kFirstDvdProfile = 0x0010;
constexpr std::uint16_t kRestrictedOverwriteProfile = 0x0013;
constexpr std::uint16_t kPlusRwProfile = 0x001A;

constexpr std::uint8_t kQuickFormat = 0x15;
constexpr std::uint8_t kPlusRwFormat = 0x26;

bool becomeReady(const VirtualDrive& drive, std::string* error) {
  // A change of the medium is told once.
  auto result = drive.execute(kTestUnitReady, {}, {});
  if (!result.good()) result = drive.execute(kTestUnitReady, {}, {});
  return check(result, "to become ready", error);
}

bool format(const VirtualDrive& drive, std::uint8_t type, std::string* error) {
  constexpr std::array<std::uint8_t, 6> kFormatUnit{0x04, 0x11};
  AnswerBytes list;
  list.u16(0).u16(8).u32(0).u8(static_cast<unsigned>(type) << 2).zeros(3);
  return check(drive.execute(kFormatUnit, {}, list.view()), "to format the disc", error);
}

bool close(const VirtualDrive& drive, std::uint8_t what, std::string* error) {
  const std::array<std::uint8_t, 10> block{0x5B, 0, what, 0, 0, 1};
  return check(drive.execute(block, {}, {}), "to close the session", error);
}

}  // namespace

bool formatForRestrictedOverwrite(const VirtualDrive& drive, std::string* error) {
  return becomeReady(drive, error) && format(drive, kQuickFormat, error);
}

bool SessionWriter::askForProfile(std::string* error) {
  std::array<std::uint8_t, 8> configuration{};
  const std::array<std::uint8_t, 10> ask{0x46, 0, 0, 0, 0, 0, 0, 0, configuration.size(), 0};
  if (!check(drive_.execute(ask, configuration, {}), "to tell its medium", error)) return false;
  profile_ = read16(configuration, 6);
  return true;
}

bool SessionWriter::setParameters(std::string* error) {
  constexpr std::size_t kHeaderBytes = 8;
  std::array<std::uint8_t, kHeaderBytes + WriteParameters::kBytes> list{};
  const bool dvd = profile_ >= kFirstDvdProfile;
  auto parameters = WriteParameters::standard(dvd ? MediumKind::DvdR : MediumKind::CdR);
  constexpr std::uint8_t kFurtherSession = 0xC0;
  constexpr std::uint8_t kDataTrack = 0x04;
  if (end_ == SessionEnd::Appendable)
    parameters.page[3] |= kFurtherSession;
  else
    parameters.page[3] &= static_cast<std::uint8_t>(~kFurtherSession);
  if (form_ == TrackForm::Audio) {
    parameters.page[3] &= static_cast<std::uint8_t>(~kDataTrack);
    parameters.page[4] = 0;  // sectors of 2352 bytes
  }
  std::ranges::copy(parameters.page, list.begin() + kHeaderBytes);
  const std::array<std::uint8_t, 10> select{0x55, 0x10, 0, 0, 0, 0, 0, 0, list.size(), 0};
  return check(drive_.execute(select, {}, list), "the write parameters", error);
}

bool SessionWriter::begin(TrackForm form, std::string* error) {
  form_ = form;
  if (!becomeReady(drive_, error) || !askForProfile(error) || !setParameters(error)) return false;
  if (profile_ == kPlusRwProfile) return format(drive_, kPlusRwFormat, error);
  if (profile_ == kRestrictedOverwriteProfile) return true;
  std::array<std::uint8_t, 36> track{};
  const std::array<std::uint8_t, 10> ask{0x52, 1, 0, 0, 0, 0xFF, 0, 0, track.size(), 0};
  if (!check(drive_.execute(ask, track, {}), "to tell where to write", error)) return false;
  next_ = static_cast<Lba>(read32(track, 12));
  return true;
}

bool SessionWriter::write(std::span<const std::uint8_t> sectors, std::string* error) {
  std::vector<std::uint8_t> padded(sectors.begin(), sectors.end());
  const auto sectorBytes = sectorBytesOf(form_);
  auto count = static_cast<Lba>(sectors.size() / sectorBytes);
  if (profile_ >= kFirstDvdProfile) count = inWholeDvdBlocks(count);
  padded.resize(static_cast<std::size_t>(count) * sectorBytes);
  AnswerBytes block;
  block.u8(0x2A).u8(0).u32(static_cast<std::uint32_t>(next_)).u8(0);
  block.u16(static_cast<unsigned>(count)).u8(0);
  if (!check(drive_.execute(block.view(), {}, padded), "to write", error)) return false;
  next_ += count;
  return true;
}

bool SessionWriter::isFormatted() const {
  return profile_ == kPlusRwProfile || profile_ == kRestrictedOverwriteProfile;
}

bool SessionWriter::endTrack(std::string* error) {
  constexpr std::uint8_t kTrack = 1;
  const std::array<std::uint8_t, 10> synchronize{0x35};
  if (!check(drive_.execute(synchronize, {}, {}), "to end the track", error)) return false;
  const bool openTrack = profile_ >= kFirstDvdProfile && !isFormatted();
  return !openTrack || close(drive_, kTrack, error);
}

bool SessionWriter::closeSession(std::string* error) {
  constexpr std::uint8_t kSession = 2;
  return close(drive_, kSession, error);
}

}  // namespace kelvane::virtualdrive::tool

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "virtualdrive/big_endian.h"
#include "virtualdrive/msf.h"
#include "virtualdrive/state/drive_state.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive {

inline void PrintTo(const Sense& sense, std::ostream* out) {
  *out << std::hex << int{sense.key} << "/" << int{sense.code} << "/" << int{sense.qualifier};
}

using Block = std::vector<std::uint8_t>;

/// What a drive answered.
struct Reply {
  Sense sense;
  std::vector<std::uint8_t> data;

  unsigned u8(std::size_t at) const { return data.at(at); }
  unsigned u16(std::size_t at) const { return u8(at) << 8 | u8(at + 1); }
  std::int32_t i32(std::size_t at) const {
    return static_cast<std::int32_t>(u16(at) << 16 | u16(at + 2));
  }
};

/// READ TRACK INFORMATION's answer.
struct TrackReply {
  Sense sense;
  unsigned number = 0;
  unsigned session = 0;
  bool blank = false;
  bool reserved = false;
  bool nextValid = false;
  Lba start = 0;
  Lba next = 0;
  Lba free = 0;
  Lba size = 0;
};

/// A line of a cue sheet (MMC-5, 6.33.4).
inline std::string cueLine(unsigned control, unsigned track, unsigned index, unsigned form,
                           Lba address) {
  const auto time = toMsf(address);
  AnswerBytes bytes;
  bytes.u8(control).u8(track).u8(index).u8(form).u8(0);
  bytes.u8(time.minute).u8(time.second).u8(time.frame);
  return {bytes.view().begin(), bytes.view().end()};
}

/// A disc in a drive, and command blocks for it. The first unit attention has been taken.
class DriveTest : public testing::Test {
 protected:
  /// Makes the disc; called by the test.
  void makeDisc(MediumKind medium, Lba capacity = kDefaultCdCapacity) {
    std::string error;
    ASSERT_TRUE(VirtualDrive::create(disc(), {medium, capacity}, &error)) << error;
    drive_ = VirtualDrive::open(disc(), &error);
    ASSERT_TRUE(drive_.has_value()) << error;
    EXPECT_EQ(send({0x00, 0, 0, 0, 0, 0}), kMediumMayHaveChanged);
  }

  std::filesystem::path disc() const { return folder_ / "disc.kvdisc"; }
  VirtualDrive& drive() { return *drive_; }

  Reply ask(const Block& block, std::size_t room = 65536) {
    Reply reply;
    reply.data.resize(room);
    const auto result = drive_->execute(block, reply.data, {});
    reply.sense = result.sense;
    reply.data.resize(result.transferred);
    return reply;
  }
  Sense send(const Block& block, std::string_view data = {}) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(data.data());
    return drive_->execute(block, {}, {bytes, data.size()}).sense;
  }

  /// Sets the write parameters page; `closing` are the multi-session bits.
  Sense setWriteParameters(WriteParameters::Type type, bool multiSession,
                           std::uint8_t blockType = 8) {
    auto page = WriteParameters::standard().page;
    page[2] = static_cast<std::uint8_t>(0x40 | static_cast<unsigned>(type));
    page[3] = multiSession ? 0xC4 : 0x04;
    page[4] = blockType;
    return modeSelect(std::string(page.begin(), page.end()));
  }
  Sense modeSelect(const std::string& pages) {
    const auto list = std::string(8, '\0') + pages;
    return send({0x55, 0x10, 0, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(list.size()), 0}, list);
  }

  Sense sendCueSheet(const std::string& sheet) {
    AnswerBytes block;
    block.u8(0x5D).zeros(5).u8(0).u16(static_cast<unsigned>(sheet.size())).u8(0);
    return send({block.view().begin(), block.view().end()}, sheet);
  }
  Sense write(Lba first, std::string_view data) {
    AnswerBytes block;
    block.u8(0x2A).u8(0).u32(static_cast<std::uint32_t>(first)).u8(0);
    block.u16(static_cast<unsigned>(data.size() / kSectorBytes)).u8(0);
    return send({block.view().begin(), block.view().end()}, data);
  }
  Reply read(Lba first, unsigned count) {
    AnswerBytes block;
    block.u8(0x28).u8(0).u32(static_cast<std::uint32_t>(first)).u8(0).u16(count).u8(0);
    return ask({block.view().begin(), block.view().end()});
  }
  std::string readText(Lba first, unsigned count) {
    const auto reply = read(first, count);
    EXPECT_EQ(reply.sense, kGood);
    return {reply.data.begin(), reply.data.end()};
  }
  Sense synchronize() { return send({0x35, 0, 0, 0, 0, 0, 0, 0, 0, 0}); }
  Sense closeTrack(std::uint8_t number) { return send({0x5B, 0, 1, 0, 0, number, 0, 0, 0, 0}); }
  Sense closeSession() { return send({0x5B, 0, 2, 0, 0, 0, 0, 0, 0, 0}); }

  /// Writes `sectors` sectors at the next writable address, ends the track and closes the session.
  void writeSession(unsigned sectors, unsigned seed, bool multiSession = true) {
    ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, multiSession), kGood);
    ASSERT_EQ(write(track(1, 0xFF).next, patternBytes(sectors * kSectorBytes, seed)), kGood);
    ASSERT_EQ(synchronize(), kGood);
    ASSERT_EQ(closeSession(), kGood);
  }

  /// READ TRACK INFORMATION: `type` 0 by LBA, 1 by track, 2 by session.
  TrackReply track(unsigned type, std::uint32_t address) {
    AnswerBytes block;
    block.u8(0x52).u8(type).u32(address).u8(0).u16(36).u8(0);
    const auto reply = ask({block.view().begin(), block.view().end()});
    TrackReply track;
    track.sense = reply.sense;
    if (!reply.sense.good()) return track;
    track.number = reply.u8(2);
    track.session = reply.u8(3);
    track.reserved = (reply.u8(6) & 0x80) != 0;
    track.blank = (reply.u8(6) & 0x40) != 0;
    track.nextValid = (reply.u8(7) & 0x01) != 0;
    track.start = reply.i32(8);
    track.next = reply.i32(12);
    track.free = reply.i32(16);
    track.size = reply.i32(24);
    return track;
  }
  Reply discInformation() { return ask({0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}); }

  DiscState inspect() {
    std::string error;
    const auto state = drive_->inspect(&error);
    EXPECT_TRUE(state.has_value()) << error;
    return state.value_or(DiscState{});
  }

  TemporaryFolder folder_;
  std::optional<VirtualDrive> drive_;
};

}  // namespace kelvane::virtualdrive

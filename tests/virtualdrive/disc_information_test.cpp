// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

class DiscInformation : public DriveTest {};

TEST_F(DiscInformation, BlankDiscIsBlankWithOneEmptySessionAndOneTrackToCome) {
  makeDisc(MediumKind::CdR);
  const auto reply = discInformation();
  ASSERT_EQ(reply.data.size(), 34U);
  EXPECT_EQ(reply.u16(0), 32U);
  EXPECT_EQ(reply.u8(2), 0x00U) << "not erasable, session empty, disc blank";
  EXPECT_EQ(reply.u8(4), 1U);
  EXPECT_EQ(reply.u8(5), 1U);
  EXPECT_EQ(reply.u8(6), 1U);
  EXPECT_EQ(std::vector(reply.data.begin() + 20, reply.data.begin() + 24),
            (std::vector<std::uint8_t>{0, 79, 59, 74}))
      << "last possible start of the lead-out: 80 minutes less one frame";
  const auto track = this->track(1, 0xFF);
  EXPECT_EQ(track.number, 1U);
  EXPECT_TRUE(track.blank);
  EXPECT_TRUE(track.nextValid);
  EXPECT_EQ(track.next, 0);
  EXPECT_EQ(track.free, kDefaultCdCapacity);
}

TEST_F(DiscInformation, RewritableDiscSaysSo) {
  makeDisc(MediumKind::CdRw);
  EXPECT_EQ(discInformation().u8(2), 0x10U);
}

TEST_F(DiscInformation, AppendableDiscCountsTheSessionToCome) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  const auto reply = discInformation();
  EXPECT_EQ(reply.u8(2), 0x01U) << "appendable, last session empty";
  EXPECT_EQ(reply.u8(4), 2U);
  EXPECT_EQ(reply.u8(5), 2U);
  EXPECT_EQ(reply.u8(6), 2U);
}

TEST_F(DiscInformation, OpenSessionIsIncomplete) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  ASSERT_EQ(write(0, patternBytes(400 * kSectorBytes, 1)), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x05U);
  EXPECT_EQ(track(1, 1).next, 400) << "the open track is continued";
  EXPECT_EQ(track(1, 0xFF).number, 1U);
  ASSERT_EQ(synchronize(), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x05U) << "the track is complete, the session is not";
  EXPECT_EQ(discInformation().u8(6), 2U);
  EXPECT_EQ(track(1, 0xFF).next, 400 + 2 + 150) << "run-out and gap lie between two tracks";
}

TEST_F(DiscInformation, ClosedDiscHasNoAddressesToWriteTo) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  writeSession(500, 2, false);
  const auto reply = discInformation();
  EXPECT_EQ(reply.u8(2), 0x0EU) << "complete";
  EXPECT_EQ(reply.u8(4), 2U);
  EXPECT_EQ(reply.i32(16), -1);
  EXPECT_EQ(reply.i32(20), -1);
  EXPECT_EQ(track(1, 0xFF).sense, kInvalidFieldInCommand);
  EXPECT_FALSE(track(1, 2).nextValid);
}

TEST_F(DiscInformation, SessionsAreApartByLeadOutsLeadInsAndGaps) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  EXPECT_EQ(inspect().sessions.at(0).leadOut, 1002) << "two sectors of run-out";
  EXPECT_EQ(track(1, 0xFF).next, 1002 + 11400) << "the first lead-out is long";
  writeSession(300, 2);
  EXPECT_EQ(inspect().sessions.at(1).leadOut, 12402 + 302);
  EXPECT_EQ(track(1, 0xFF).next, 12704 + 6900) << "further ones are short";
  writeSession(300, 3);
  EXPECT_EQ(track(1, 0xFF).next, 19604 + 302 + 6900);
  EXPECT_EQ(track(1, 0xFF).free, kDefaultCdCapacity - 26806);
}

TEST_F(DiscInformation, TracksAreFoundByAddressNumberAndSession) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  writeSession(500, 2);
  EXPECT_EQ(track(0, 0).number, 1U);
  EXPECT_EQ(track(0, 999).number, 1U);
  EXPECT_EQ(track(0, 12402).number, 2U);
  EXPECT_EQ(track(0, 12901).session, 2U);
  EXPECT_EQ(track(0, 6000).sense, kAddressOutOfRange) << "between the sessions";
  EXPECT_EQ(track(1, 2).start, 12402);
  EXPECT_EQ(track(1, 2).size, 500);
  EXPECT_EQ(track(2, 2).number, 2U);
  EXPECT_EQ(track(2, 3).number, 3U) << "the session to come";
  EXPECT_EQ(track(1, 4).sense, kInvalidFieldInCommand);
  EXPECT_EQ(track(3, 1).sense, kInvalidFieldInCommand);
}

TEST_F(DiscInformation, CapacityIsTheEndOfTheLastClosedSession) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(ask({0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}).i32(0), 0);
  writeSession(1000, 1);
  const auto reply = ask({0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(reply.i32(0), 1001);
  EXPECT_EQ(reply.i32(4), 2048);
  ASSERT_EQ(write(12402, patternBytes(2048, 1)), kGood);
  EXPECT_EQ(ask({0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}).i32(0), 1001);
}

TEST_F(DiscInformation, FormatCapacitiesKeepTheirLength) {
  makeDisc(MediumKind::CdR);
  const auto blank = ask({0x23, 0, 0, 0, 0, 0, 0, 0, 252, 0});
  ASSERT_EQ(blank.data.size(), 12U);
  EXPECT_EQ(blank.u8(3), 8U);
  EXPECT_EQ(blank.u8(8), 1U);
  writeSession(300, 1);
  const auto written = ask({0x23, 0, 0, 0, 0, 0, 0, 0, 252, 0});
  EXPECT_EQ(written.data.size(), 12U);
  EXPECT_EQ(written.u8(8), 2U);
}

TEST_F(DiscInformation, BufferIsAlwaysFree) {
  makeDisc(MediumKind::CdR);
  const auto reply = ask({0x5C, 0, 0, 0, 0, 0, 0, 0, 12, 0});
  EXPECT_GT(reply.i32(4), 0);
  EXPECT_EQ(reply.i32(4), reply.i32(8));
}

}  // namespace
}  // namespace kelvane::virtualdrive

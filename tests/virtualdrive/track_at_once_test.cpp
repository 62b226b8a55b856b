// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

class TrackAtOnce : public DriveTest {
 protected:
  void makeAppendable(MediumKind medium = MediumKind::CdR, Lba capacity = kDefaultCdCapacity) {
    makeDisc(medium, capacity);
    ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  }
  Sense reserve(std::uint32_t sectors) {
    AnswerBytes block;
    block.u8(0x53).zeros(4).u32(sectors).u8(0);
    return send({block.view().begin(), block.view().end()});
  }
};

TEST_F(TrackAtOnce, WhatIsWrittenIsRead) {
  makeAppendable();
  const auto data = patternBytes(500 * kSectorBytes, 7);
  ASSERT_EQ(write(0, data.substr(0, 300 * kSectorBytes)), kGood);
  ASSERT_EQ(write(300, data.substr(300 * kSectorBytes)), kGood);
  EXPECT_EQ(readText(0, 32), data.substr(0, 32 * kSectorBytes));
  EXPECT_EQ(readText(499, 1), data.substr(499 * kSectorBytes));
  ASSERT_EQ(synchronize(), kGood);
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(contentOf(drive().sectorsFile()), data) << "by address in the file of sectors";
}

TEST_F(TrackAtOnce, OnlyTheNextWritableAddressTakesData) {
  makeAppendable();
  const auto sector = patternBytes(2048, 1);
  EXPECT_EQ(write(1, sector), kInvalidAddressForWrite);
  EXPECT_EQ(write(-150, sector), kInvalidAddressForWrite);
  ASSERT_EQ(write(0, sector), kGood);
  EXPECT_EQ(write(0, patternBytes(2048, 2)), kInvalidAddressForWrite) << "written once";
  EXPECT_EQ(write(2, sector), kInvalidAddressForWrite);
  EXPECT_EQ(readText(0, 1), sector);
  EXPECT_EQ(write(1, sector), kGood);
}

TEST_F(TrackAtOnce, EarlierSessionsCannotBeChanged) {
  makeAppendable();
  writeSession(300, 1);
  const auto before = contentOf(drive().sectorsFile());
  for (const Lba address : {0, 299, 300, 301, 302, 6000, 11701, 11703}) {
    EXPECT_EQ(write(address, patternBytes(2048, 9)), kInvalidAddressForWrite) << address;
  }
  EXPECT_EQ(contentOf(drive().sectorsFile()), before);
  EXPECT_EQ(write(11702, patternBytes(2048, 9)), kGood);
  EXPECT_EQ(contentOf(drive().sectorsFile()).substr(0, before.size()), before);
}

TEST_F(TrackAtOnce, RewritableDiscFollowsTheSameRulesUntilItIsBlanked) {
  makeAppendable(MediumKind::CdRw);
  writeSession(300, 1);
  EXPECT_EQ(write(0, patternBytes(2048, 2)), kInvalidAddressForWrite);
  ASSERT_EQ(send({0xA1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kGood);
  EXPECT_EQ(write(0, patternBytes(2048, 2)), kGood);
}

TEST_F(TrackAtOnce, ShortTrackIsPaddedToFourSeconds) {
  makeAppendable();
  ASSERT_EQ(write(0, patternBytes(10 * kSectorBytes, 1)), kGood);
  ASSERT_EQ(synchronize(), kGood);
  EXPECT_EQ(track(1, 1).size, 300);
  EXPECT_EQ(readText(10, 1), std::string(2048, '\0'));
}

TEST_F(TrackAtOnce, SynchronizingWithoutDataDoesNothing) {
  makeAppendable();
  EXPECT_EQ(synchronize(), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x00U);
}

TEST_F(TrackAtOnce, SessionMayHaveSeveralTracks) {
  makeAppendable();
  ASSERT_EQ(write(0, patternBytes(300 * kSectorBytes, 1)), kGood);
  ASSERT_EQ(synchronize(), kGood);
  ASSERT_EQ(write(452, patternBytes(300 * kSectorBytes, 2)), kGood);
  ASSERT_EQ(closeTrack(2), kGood);
  ASSERT_EQ(closeSession(), kGood);
  const auto disc = inspect();
  ASSERT_EQ(disc.sessions.size(), 1U);
  EXPECT_EQ(disc.sessions[0].lastTrack, 2);
  EXPECT_EQ(disc.sessions[0].leadOut, 754);
}

TEST_F(TrackAtOnce, SessionWithAnIncompleteTrackIsNotClosed) {
  makeAppendable();
  ASSERT_EQ(write(0, patternBytes(2048, 1)), kGood);
  EXPECT_EQ(closeSession(), kIncompleteTrackInSession);
  EXPECT_EQ(closeTrack(1), kGood);
  EXPECT_EQ(closeSession(), kGood);
}

TEST_F(TrackAtOnce, ClosingWhatIsClosedOrEmptyDoesNothing) {
  makeAppendable();
  EXPECT_EQ(closeSession(), kGood);
  EXPECT_EQ(closeTrack(1), kGood) << "the invisible track";
  EXPECT_EQ(discInformation().u8(2), 0x00U);
  writeSession(300, 1);
  EXPECT_EQ(closeSession(), kGood);
  EXPECT_EQ(closeTrack(1), kGood);
  EXPECT_EQ(inspect().sessions.size(), 1U);
  EXPECT_EQ(closeTrack(7), kInvalidFieldInCommand);
  EXPECT_EQ(send({0x5B, 0, 6, 0, 0, 0, 0, 0, 0, 0}), kInvalidFieldInCommand)
      << "a close function of other media";
}

TEST_F(TrackAtOnce, DiscClosedForGoodTakesNothingMore) {
  makeAppendable();
  writeSession(300, 1, false);
  EXPECT_EQ(write(11702, patternBytes(2048, 1)), kInvalidAddressForWrite);
  EXPECT_EQ(reserve(300), kIncompatibleMedium);
}

TEST_F(TrackAtOnce, DiscTakesWhatItHoldsAndNoSectorMore) {
  makeAppendable(MediumKind::CdR, 1000);
  const auto data = patternBytes(1000 * kSectorBytes, 1);
  ASSERT_EQ(write(0, data.substr(0, 900 * kSectorBytes)), kGood);
  EXPECT_EQ(write(900, patternBytes(101 * kSectorBytes, 2)), kEndOfUserArea);
  EXPECT_EQ(track(1, 0xFF).next, 900) << "nothing of it was written";
  ASSERT_EQ(write(900, data.substr(900 * kSectorBytes)), kGood);
  EXPECT_EQ(write(1000, patternBytes(2048, 2)), kEndOfUserArea);
  ASSERT_EQ(synchronize(), kGood);
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(discInformation().u8(2) & 0x03U, 2U) << "closed: no further session has room";
  EXPECT_EQ(contentOf(drive().sectorsFile()), data);
}

TEST_F(TrackAtOnce, TrackKeepsTheFormItWasBegunWith) {
  makeAppendable();
  ASSERT_EQ(write(0, patternBytes(2048, 1)), kGood);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true, 10), kGood);
  EXPECT_EQ(write(1, patternBytes(2048, 1)), kIllegalModeForTrack);
}

TEST_F(TrackAtOnce, LessDataThanAnnouncedIsRefused) {
  makeAppendable();
  EXPECT_EQ(send({0x2A, 0, 0, 0, 0, 0, 0, 0, 2, 0}, patternBytes(2048, 1)), kInvalidFieldInCommand);
  EXPECT_EQ(send({0x2A, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kGood) << "no sectors, no error";
  EXPECT_EQ(send({0xAA, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}, patternBytes(2048, 1)),
            kInvalidFieldInCommand);
  EXPECT_EQ(send({0xAA, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0}, patternBytes(2048, 1)), kGood);
}

TEST_F(TrackAtOnce, ReservedTrackIsFilledInItsPlace) {
  makeAppendable();
  ASSERT_EQ(reserve(400), kGood);
  EXPECT_TRUE(track(1, 1).reserved);
  EXPECT_EQ(track(1, 1).size, 400);
  EXPECT_EQ(track(1, 0xFF).next, 552) << "the invisible track comes after it";
  const auto data = patternBytes(300 * kSectorBytes, 3);
  ASSERT_EQ(write(552, data), kGood);
  ASSERT_EQ(write(0, data), kGood);
  EXPECT_EQ(write(300, patternBytes(101 * kSectorBytes, 4)), kEndOfUserArea);
  ASSERT_EQ(synchronize(), kGood);
  EXPECT_EQ(closeSession(), kReservedTrackNotFull);
  ASSERT_EQ(closeTrack(1), kGood) << "pads it to its size";
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(readText(0, 30), data.substr(0, 30 * kSectorBytes));
  EXPECT_EQ(readText(399, 1), std::string(2048, '\0'));
  EXPECT_EQ(readText(552, 30), data.substr(0, 30 * kSectorBytes));
}

TEST_F(TrackAtOnce, ReservationsThatCannotBeAreRefused) {
  makeAppendable(MediumKind::CdR, 1000);
  EXPECT_EQ(reserve(0), kInvalidFieldInCommand);
  EXPECT_EQ(reserve(1001), kEndOfUserArea);
  EXPECT_EQ(reserve(0xFFFFFFFF), kEndOfUserArea);
  ASSERT_EQ(write(0, patternBytes(2048, 1)), kGood);
  EXPECT_EQ(reserve(300), kCommandSequence) << "a track is open";
}

TEST_F(TrackAtOnce, NinetyNineTracksAreTheEnd) {
  makeAppendable();
  for (int number = 1; number <= 99; ++number) {
    ASSERT_EQ(write(track(1, 0xFF).next, patternBytes(300 * kSectorBytes, 1)), kGood) << number;
    ASSERT_EQ(synchronize(), kGood);
  }
  EXPECT_EQ(track(1, 0xFF).sense, kInvalidFieldInCommand);
  EXPECT_EQ(reserve(300), kNoMoreTracks);
  EXPECT_EQ(write(inspect().tracks.back().end() + 152, patternBytes(2048, 1)),
            kInvalidAddressForWrite);
  EXPECT_EQ(closeSession(), kGood);
  EXPECT_TRUE(inspect().finalized);
}

}  // namespace
}  // namespace kelvane::virtualdrive

// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

/// The sheet of a session with one data track.
std::string sheetFor(Lba sectors) {
  return cueLine(0x41, 0, 0, 0x14, -150) + cueLine(0x41, 1, 0, 0x10, -150) +
         cueLine(0x41, 1, 1, 0x10, 0) + cueLine(0x41, 0xAA, 1, 0x14, sectors);
}

class SessionAtOnce : public DriveTest {
 protected:
  void prepare(bool multiSession, Lba capacity = kDefaultCdCapacity) {
    makeDisc(MediumKind::CdR, capacity);
    ASSERT_EQ(setWriteParameters(WriteParameters::Type::SessionAtOnce, multiSession), kGood);
  }
};

TEST_F(SessionAtOnce, AnnouncedSessionIsClosedWithItsLastSector) {
  prepare(true);
  const auto data = patternBytes(500 * kSectorBytes, 1);
  ASSERT_EQ(sendCueSheet(sheetFor(500)), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x00U) << "still blank";
  ASSERT_EQ(write(-150, std::string(100 * kSectorBytes, '\0')), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x05U) << "begun";
  EXPECT_EQ(track(1, 1).next, -50);
  ASSERT_EQ(write(-50, std::string(50 * kSectorBytes, '\0') + data.substr(0, 10 * kSectorBytes)),
            kGood)
      << "across the beginning of the track";
  ASSERT_EQ(write(10, data.substr(10 * kSectorBytes)), kGood);
  ASSERT_EQ(synchronize(), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x01U) << "appendable";
  EXPECT_EQ(inspect().sessions.at(0).leadOut, 500) << "no run-out";
  EXPECT_EQ(contentOf(drive().sectorsFile()), data);
  writeSession(300, 2);
  EXPECT_EQ(inspect().sessions.at(1).leadOut, 500 + 11400 + 302);
}

TEST_F(SessionAtOnce, WithoutMultiSessionTheDiscIsClosed) {
  prepare(false);
  ASSERT_EQ(sendCueSheet(sheetFor(300)), kGood);
  ASSERT_EQ(write(-150, std::string(450 * kSectorBytes, 'x')), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x0EU);
}

TEST_F(SessionAtOnce, SeveralTracksAreTakenAsAnnounced) {
  prepare(true);
  ASSERT_EQ(sendCueSheet(cueLine(0x41, 1, 0, 0x10, -150) + cueLine(0x41, 1, 1, 0x10, 0) +
                         cueLine(0x41, 2, 0, 0x10, 300) + cueLine(0x41, 2, 1, 0x10, 450) +
                         cueLine(0x41, 0xAA, 1, 0x14, 900)),
            kGood);
  ASSERT_EQ(write(-150, std::string(1050 * kSectorBytes, 'x')), kGood);
  const auto disc = inspect();
  ASSERT_EQ(disc.tracks.size(), 2U);
  EXPECT_EQ(disc.tracks[0].recorded, 300);
  EXPECT_EQ(disc.tracks[1].start, 450);
  EXPECT_EQ(disc.tracks[1].recorded, 450);
}

TEST_F(SessionAtOnce, SectorsOutOfTurnAreRefused) {
  prepare(true);
  EXPECT_EQ(write(-150, std::string(2048, 'x')), kCommandSequence) << "no cue sheet yet";
  ASSERT_EQ(sendCueSheet(sheetFor(300)), kGood);
  EXPECT_EQ(write(0, std::string(2048, 'x')), kInvalidAddressForWrite) << "the gap comes first";
  EXPECT_EQ(write(-150, std::string(451 * kSectorBytes, 'x')), kEndOfUserArea);
  ASSERT_EQ(write(-150, std::string(200 * kSectorBytes, 'x')), kGood);
  EXPECT_EQ(write(49, std::string(2048, 'x')), kInvalidAddressForWrite);
  EXPECT_EQ(closeSession(), kIncompleteTrackInSession);
  EXPECT_EQ(synchronize(), kIncompleteTrackInSession);
  EXPECT_EQ(sendCueSheet(sheetFor(300)), kCommandSequence) << "one is being written";
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  EXPECT_EQ(write(50, std::string(2048, 'x')), kIllegalModeForTrack);
}

TEST_F(SessionAtOnce, SheetsTheDriveCannotWriteAreRefused) {
  prepare(true, 1000);
  EXPECT_EQ(sendCueSheet(sheetFor(1001)), kInvalidFieldInParameters) << "longer than the disc";
  EXPECT_EQ(sendCueSheet(sheetFor(299)), kInvalidFieldInParameters)
      << "shorter than a track can be";
  EXPECT_EQ(sendCueSheet(cueLine(0x41, 1, 0, 0x00, -150) + cueLine(0x41, 1, 1, 0x00, 0) +
                         cueLine(0x41, 0xAA, 1, 0x00, 500)),
            kInvalidFieldInParameters)
      << "a data track with sectors of audio";
  EXPECT_EQ(sendCueSheet(cueLine(0x01, 1, 0, 0x10, -150) + cueLine(0x01, 1, 1, 0x10, 0) +
                         cueLine(0x01, 0xAA, 1, 0x10, 500)),
            kInvalidFieldInParameters)
      << "an audio track with sectors of data";
  EXPECT_EQ(sendCueSheet(cueLine(0x11, 1, 0, 0x00, -150) + cueLine(0x11, 1, 1, 0x00, 0) +
                         cueLine(0x11, 0xAA, 1, 0x00, 500)),
            kInvalidFieldInParameters)
      << "audio with pre-emphasis";
  EXPECT_EQ(sendCueSheet(sheetFor(500).substr(0, 30)), kParameterListLength);
  EXPECT_EQ(sendCueSheet(""), kParameterListLength);
  EXPECT_EQ(sendCueSheet(sheetFor(500).substr(0, 24)), kInvalidFieldInParameters) << "no lead-out";
  EXPECT_EQ(sendCueSheet(cueLine(0x41, 2, 1, 0x10, 0) + cueLine(0x41, 0xAA, 1, 0x14, 500)),
            kInvalidFieldInParameters)
      << "begins with track 2";
}

TEST_F(SessionAtOnce, SheetIsForBlankDiscsAndItsWriteType) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(sendCueSheet(sheetFor(300)), kCommandSequence) << "track at once is set";
  writeSession(300, 1);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::SessionAtOnce, true), kGood);
  EXPECT_EQ(sendCueSheet(sheetFor(300)), kCommandSequence) << "not blank";
}

TEST_F(SessionAtOnce, SheetWithoutDataIsForgottenWhenATrackIsWrittenInstead) {
  prepare(true);
  ASSERT_EQ(sendCueSheet(sheetFor(300)), kGood);
  writeSession(300, 1);
  EXPECT_FALSE(inspect().cueSheet.has_value());
  EXPECT_EQ(inspect().sessions.size(), 1U);
}

}  // namespace
}  // namespace kelvane::virtualdrive

// SPDX-License-Identifier: GPL-2.0-or-later
// DVD-R, DVD-RW in sequential mode and DVD+R.
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

constexpr Lba kCapacity = 40000;
const Lba kFirstBorder = 16384;

class DvdSequential : public DriveTest {
 protected:
  void makeDvd(MediumKind medium, WriteParameters::Type type = WriteParameters::Type::Incremental,
               bool multiSession = true) {
    makeDisc(medium, kCapacity);
    ASSERT_EQ(setWriteParameters(type, multiSession), kGood);
  }
  /// Writes a session of one track as burning programs do.
  void burn(unsigned sectors, unsigned seed) {
    ASSERT_EQ(write(track(1, 0xFF).next, patternBytes(sectors * kSectorBytes, seed)), kGood);
    ASSERT_EQ(synchronize(), kGood);
    ASSERT_EQ(closeTrack(0xFF), kGood);
    ASSERT_EQ(closeSession(), kGood);
  }
  Sense reserve(std::uint32_t sectors) {
    AnswerBytes block;
    block.u8(0x53).zeros(4).u32(sectors).u8(0);
    return send({block.view().begin(), block.view().end()});
  }
  Sense close(std::uint8_t function) { return send({0x5B, 1, function, 0, 0, 0, 0, 0, 0, 0}); }
  Sense blank(std::uint8_t type) { return send({0xA1, type, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}); }
  Reply trackInformation(std::uint8_t number) {
    return ask({0x52, 1, 0, 0, 0, number, 0, 0, 36, 0});
  }
  bool featureIsCurrent(std::uint8_t code) {
    return (ask({0x46, 2, 0, code, 0, 0, 0, 0, 16, 0}).u8(8 + 2) & 1) != 0;
  }
};

class EveryDvdSequential : public DvdSequential, public testing::WithParamInterface<MediumKind> {};

TEST_P(EveryDvdSequential, BlankDiscSaysSoWithOneInvisibleTrack) {
  makeDvd(GetParam());
  const auto information = discInformation();
  EXPECT_EQ(information.u8(2) & 0x0FU, 0U) << "blank, the session empty";
  EXPECT_EQ(information.u8(7), 0x20U) << "no background formatting";
  EXPECT_EQ(information.i32(16), 0) << "no times of a CD";
  EXPECT_EQ(information.i32(20), 0);
  const auto track = trackInformation(1);
  EXPECT_EQ(track.u8(5), 0x04U);
  EXPECT_EQ(track.u8(6), 0x6FU) << "blank, incremental, mode unknown";
  EXPECT_EQ(track.u8(7), 0x01U) << "its next address is valid";
  EXPECT_EQ(track.i32(16), kCapacity);
  EXPECT_EQ(track.i32(24), kCapacity);
  EXPECT_EQ(ask({0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}).i32(0), 0);
  EXPECT_EQ(ask({0x43, 0, 0, 0, 0, 0, 0, 0, 12, 0}).sense, kInvalidFieldInCommand);
}

TEST_P(EveryDvdSequential, OnlyTheNextWritableAddressTakesDataAndSessionsStay) {
  makeDvd(GetParam());
  EXPECT_EQ(write(16, patternBytes(2048, 1)), kInvalidAddressForWrite);
  burn(100, 1);
  const auto data = contentOf(drive().sectorsFile());
  EXPECT_EQ(data.size(), 112 * kSectorBytes) << "whole blocks of 16 sectors";
  const auto next = track(1, 0xFF).next;
  EXPECT_EQ(next, 112 + (GetParam() == MediumKind::DvdPlusR ? 2048 : kFirstBorder));
  for (const Lba address : {0, 96, 112, 200, next - 1, next + 1}) {
    EXPECT_EQ(write(address, patternBytes(2048, 9)), kInvalidAddressForWrite) << address;
  }
  burn(16, 2);
  EXPECT_EQ(contentOf(drive().sectorsFile()).substr(0, data.size()), data);
  EXPECT_EQ(readText(next, 16), patternBytes(16 * kSectorBytes, 2));
  EXPECT_EQ(read(next - 1, 1).sense, kUnrecoveredRead) << "the zone between the sessions";
  EXPECT_EQ(read(next + 16, 1).sense, kAddressOutOfRange);
}

TEST_P(EveryDvdSequential, AppendableDiscTellsOfTheSessionToCome) {
  makeDvd(GetParam());
  burn(16, 1);
  const auto information = discInformation();
  EXPECT_EQ(information.u8(2) & 0x0FU, 0x01U) << "appendable, the last session empty";
  EXPECT_EQ(information.u8(4), 2U);
  EXPECT_EQ(information.u8(5), 2U);
  EXPECT_EQ(information.u8(6), 2U);
  EXPECT_EQ(track(0, 5).number, 1U);
  EXPECT_EQ(track(0, 16).sense, kAddressOutOfRange);
  EXPECT_EQ(track(2, 1).size, 16);
  EXPECT_EQ(ask({0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}).i32(0), 15);
}

TEST_P(EveryDvdSequential, OpenTrackIsContinued) {
  makeDvd(GetParam());
  ASSERT_EQ(write(0, patternBytes(32 * kSectorBytes, 1)), kGood);
  EXPECT_EQ(synchronize(), kGood);
  const auto information = discInformation();
  EXPECT_EQ(information.u8(2) & 0x0FU, 0x05U) << "appendable, the last session incomplete";
  EXPECT_EQ(information.u8(6), 1U);
  const auto track = trackInformation(1);
  const unsigned state = GetParam() == MediumKind::DvdPlusR ? 0xA1 : 0x21;
  EXPECT_EQ(track.u8(6), state);
  EXPECT_EQ(track.u8(7), 0x03U);
  EXPECT_EQ(track.i32(12), 32);
  EXPECT_EQ(track.i32(28), 31) << "last recorded address";
  EXPECT_EQ(closeSession(), kIncompleteTrackInSession);
  ASSERT_EQ(write(32, patternBytes(16 * kSectorBytes, 2)), kGood);
  ASSERT_EQ(closeTrack(1), kGood);
  ASSERT_EQ(closeTrack(1), kGood) << "closed already";
  EXPECT_EQ(this->track(1, 0xFF).next, 48) << "a further track of the same session";
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(inspect().sessions.size(), 1U);
}

TEST_P(EveryDvdSequential, DiscTakesWhatItHoldsAndIsClosedThen) {
  makeDvd(GetParam());
  ASSERT_EQ(write(0, patternBytes((kCapacity - 16) * kSectorBytes, 1)), kGood);
  EXPECT_EQ(write(kCapacity - 16, patternBytes(17 * kSectorBytes, 2)), kEndOfUserArea);
  ASSERT_EQ(write(kCapacity - 16, patternBytes(16 * kSectorBytes, 2)), kGood);
  EXPECT_EQ(trackInformation(1).u8(7), 0x02U) << "full: no next address";
  ASSERT_EQ(closeTrack(1), kGood);
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(discInformation().u8(2) & 0x0FU, 0x0EU) << "complete";
  EXPECT_EQ(track(1, 0xFF).sense, kInvalidFieldInCommand);
}

TEST_P(EveryDvdSequential, ReservedTrackIsFilledInItsPlace) {
  makeDvd(GetParam());
  ASSERT_EQ(reserve(100), kGood);
  EXPECT_EQ(trackInformation(1).u8(6) & 0xC0U, 0xC0U) << "reserved and blank";
  EXPECT_EQ(trackInformation(1).i32(24), 112);
  EXPECT_EQ(track(1, 0xFF).next, 112);
  ASSERT_EQ(write(0, patternBytes(32 * kSectorBytes, 1)), kGood);
  EXPECT_EQ(write(32, patternBytes(96 * kSectorBytes, 1)), kEndOfUserArea);
  EXPECT_EQ(closeSession(), kReservedTrackNotFull);
  ASSERT_EQ(closeTrack(1), kGood) << "pads it";
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(inspect().sessions.at(0).leadOut, 112);
  EXPECT_EQ(reserve(kCapacity), kEndOfUserArea);
  EXPECT_EQ(reserve(0), kInvalidFieldInCommand);
  ASSERT_EQ(write(track(1, 0xFF).next, patternBytes(2048, 1)), kGood);
  EXPECT_EQ(reserve(16), kCommandSequence) << "a track is open";
}

INSTANTIATE_TEST_SUITE_P(Media, EveryDvdSequential,
                         testing::Values(MediumKind::DvdR, MediumKind::DvdRw,
                                         MediumKind::DvdPlusR));

TEST_F(DvdSequential, FabricatedTocTellsOfTwoSessionsAtMostOnADvdR) {
  makeDvd(MediumKind::DvdR);
  burn(16, 1);
  const std::vector<std::uint8_t> one{0, 18, 1, 1,    0,    0x14, 1, 0, 0, 0,
                                      0, 0,  0, 0x14, 0xAA, 0,    0, 0, 0, 16};
  EXPECT_EQ(ask({0x43, 0, 0, 0, 0, 0, 1, 0, 64, 0}).data, one);
  burn(16, 2);
  burn(16, 3);
  // 16 + 16384 + 16 + 3072 = 4C20h is the beginning of the third session.
  const std::vector<std::uint8_t> three{0, 26,   1,    2,    0, 0x14, 1,    0,   0,    0,
                                        0, 0,    0,    0x14, 2, 0,    0,    0,   0x4C, 0x20,
                                        0, 0x14, 0xAA, 0,    0, 0,    0x4C, 0x30};
  EXPECT_EQ(ask({0x43, 0, 0, 0, 0, 0, 1, 0, 64, 0}).data, three);
  const std::vector<std::uint8_t> last{0, 10, 1, 2, 0, 0x14, 2, 0, 0, 0, 0x4C, 0x20};
  EXPECT_EQ(ask({0x43, 0, 1, 0, 0, 0, 0, 0, 12, 0}).data, last);
  EXPECT_EQ(ask({0x43, 0, 2, 0, 0, 0, 1, 0, 64, 0}).sense, kInvalidFieldInCommand);
  EXPECT_EQ(ask({0x43, 0, 4, 0, 0, 0, 1, 0, 64, 0}).sense, kInvalidFieldInCommand);
}

TEST_F(DvdSequential, FabricatedTocOfADvdPlusRHasATrackForEachSession) {
  makeDvd(MediumKind::DvdPlusR);
  for (unsigned seed = 1; seed <= 3; ++seed) burn(16, seed);
  EXPECT_EQ(ask({0x43, 0, 0, 0, 0, 0, 1, 0, 64, 0}).u8(3), 3U);
  const auto last = ask({0x43, 0, 1, 0, 0, 0, 0, 0, 12, 0});
  EXPECT_EQ(last.u8(3), 3U);
  EXPECT_EQ(last.i32(8), 2 * (16 + 2048));
}

TEST_F(DvdSequential, ProfilesAndFeaturesTellHowTheDiscCanBeWritten) {
  makeDvd(MediumKind::DvdR);
  EXPECT_EQ(ask({0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0}).u16(6), 0x0011U);
  for (const auto code : Block{0x10, 0x1F, 0x21, 0x2F}) {
    EXPECT_TRUE(featureIsCurrent(code)) << int{code};
  }
  for (const auto code : Block{0x1E, 0x20, 0x23, 0x26, 0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x37}) {
    EXPECT_FALSE(featureIsCurrent(code)) << int{code};
  }
  const auto streaming = ask({0x46, 2, 0, 0x21, 0, 0, 0, 0, 16, 0});
  EXPECT_EQ(streaming.i32(0), 16) << "4 more bytes of header, 12 of the feature";
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::Incremental, false), kGood);
  burn(16, 1);
  EXPECT_FALSE(featureIsCurrent(0x21)) << "closed";
  EXPECT_FALSE(featureIsCurrent(0x2F));
  EXPECT_TRUE(featureIsCurrent(0x1F));
}

TEST_F(DvdSequential, ProfilesOfTheOtherMediaAreTheirOwn) {
  makeDvd(MediumKind::DvdRw);
  EXPECT_EQ(ask({0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0}).u16(6), 0x0014U);
  EXPECT_TRUE(featureIsCurrent(0x23));
  EXPECT_EQ(discInformation().u8(2), 0x10U) << "erasable";
  drive_.reset();
  std::filesystem::remove_all(disc());
  makeDvd(MediumKind::DvdPlusR);
  EXPECT_EQ(ask({0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0}).u16(6), 0x001BU);
  EXPECT_TRUE(featureIsCurrent(0x2B));
  EXPECT_FALSE(featureIsCurrent(0x21));
}

TEST_F(DvdSequential, RecordingAtOnceEndsWithTheSession) {
  makeDvd(MediumKind::DvdR, WriteParameters::Type::SessionAtOnce, false);
  ASSERT_EQ(reserve(100), kGood);
  ASSERT_EQ(write(0, patternBytes(96 * kSectorBytes, 1)), kGood);
  EXPECT_EQ(trackInformation(1).u8(6), 0x81U) << "reserved, not incremental";
  EXPECT_EQ(synchronize(), kGood);
  EXPECT_TRUE(inspect().sessions.empty()) << "not full yet";
  ASSERT_EQ(write(96, patternBytes(4 * kSectorBytes, 2)), kGood);
  EXPECT_EQ(synchronize(), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x0EU) << "complete";
  EXPECT_EQ(inspect().sessions.at(0).leadOut, 112);
}

TEST_F(DvdSequential, RecordingAtOnceWithoutReservationMayLeaveTheDiscAppendable) {
  makeDvd(MediumKind::DvdRw, WriteParameters::Type::SessionAtOnce, true);
  ASSERT_EQ(write(0, patternBytes(20 * kSectorBytes, 1)), kGood);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::Incremental, true), kGood);
  EXPECT_EQ(write(20, patternBytes(2048, 1)), kIllegalModeForTrack) << "in the other way";
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::SessionAtOnce, true), kGood);
  ASSERT_EQ(synchronize(), kGood);
  EXPECT_EQ(discInformation().u8(2) & 0x0FU, 0x01U);
  EXPECT_EQ(write(track(1, 0xFF).next, patternBytes(2048, 1)), kIllegalModeForTrack)
      << "only a blank disc is written at once";
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::Incremental, true), kGood);
  burn(16, 2);
}

TEST_F(DvdSequential, MinimalBlankingLeavesADiscForRecordingAtOnceAndFullBlankingOneForAll) {
  makeDvd(MediumKind::DvdRw);
  burn(16, 1);
  ASSERT_EQ(blank(1), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x10U);
  EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()), 0U);
  EXPECT_FALSE(featureIsCurrent(0x21));
  EXPECT_TRUE(featureIsCurrent(0x2F));
  EXPECT_EQ(write(0, patternBytes(2048, 1)), kIllegalModeForTrack);
  ASSERT_EQ(blank(0x10), kGood) << "all of it, without waiting";
  EXPECT_TRUE(featureIsCurrent(0x21));
  EXPECT_EQ(write(0, patternBytes(2048, 1)), kGood);
}

TEST_F(DvdSequential, WriteOnceDiscsAreNeitherBlankedNorFormatted) {
  for (const auto medium : {MediumKind::DvdR, MediumKind::DvdPlusR}) {
    makeDvd(medium);
    burn(16, 1);
    EXPECT_EQ(blank(0), kIncompatibleMedium);
    EXPECT_EQ(send({0x04, 0x11, 0, 0, 0, 0}, std::string("\0\x02\0\x08\0\0\0\0\x54\0\0\0", 12)),
              kIncompatibleMedium);
    EXPECT_EQ(inspect().sessions.size(), 1U);
    drive_.reset();
    std::filesystem::remove_all(disc());
  }
}

TEST_F(DvdSequential, DvdPlusRIsClosedForGoodByItsOwnFunction) {
  makeDvd(MediumKind::DvdPlusR);
  burn(16, 1);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::Incremental, false), kGood);
  burn(16, 2);
  EXPECT_EQ(discInformation().u8(2), 0x01U) << "the page means nothing to it";
  EXPECT_EQ(close(0), kInvalidFieldInCommand);
  EXPECT_EQ(close(6), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x0EU);
  EXPECT_EQ(write(track(1, 2).start + 16, patternBytes(2048, 1)), kInvalidAddressForWrite);
}

TEST_F(DvdSequential, CloseFunctionsOfOtherMediaAreRefused) {
  makeDvd(MediumKind::DvdR);
  for (const auto function : Block{0, 3, 4, 5, 6, 7}) {
    EXPECT_EQ(close(function), kInvalidFieldInCommand) << int{function};
  }
}

TEST_F(DvdSequential, WaysOfWritingThatADvdDoesNotKnowAreRefused) {
  makeDvd(MediumKind::DvdR);
  EXPECT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true),
            kInvalidFieldInParameters);
  EXPECT_EQ(setWriteParameters(WriteParameters::Type::Incremental, true, 10),
            kInvalidFieldInParameters)
      << "mode 2 is for CDs";
  EXPECT_EQ(send({0x5D, 0, 0, 0, 0, 0, 0, 0, 8, 0}, std::string(8, 'x')), kIncompatibleMedium);
  EXPECT_EQ(ask({0xBE, 0, 0, 0, 0, 0, 0, 0, 1, 0x10, 0, 0}).sense, kIncompatibleMedium);
  const auto standard = ask({0x5A, 8, 0x85, 0, 0, 0, 0, 0, 60, 0});
  EXPECT_EQ(standard.u8(8 + 2) & 0x0FU, 0U) << "incremental, unless set otherwise";
}

TEST_F(DvdSequential, SpeedsAreThoseOfDvds) {
  makeDvd(MediumKind::DvdR);
  const auto page = ask({0x5A, 8, 0x2A, 0, 0, 0, 0, 0, 128, 0});
  EXPECT_EQ(page.u16(8 + 28), 11080U);
  EXPECT_EQ(page.u16(8 + 30), 5U);
  EXPECT_EQ(page.u16(8 + 32 + 2), 11080U);
  EXPECT_EQ(page.u16(8 + 32 + 18), 1385U);
  const auto speeds = ask({0xAC, 0, 0, 0, 0, 0, 0, 0, 0, 8, 3, 0});
  EXPECT_EQ(speeds.data.size(), 8U + 5 * 16);
  EXPECT_EQ(speeds.i32(8 + 4), kCapacity - 1);
  EXPECT_EQ(speeds.i32(8 + 12), 11080);
}

}  // namespace
}  // namespace kelvane::virtualdrive

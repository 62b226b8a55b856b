// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"
#include "virtualdrive/state/disc_json.h"

namespace kelvane::virtualdrive {
namespace {

class Blanking : public DriveTest {
 protected:
  Sense blank(std::uint8_t type) { return send({0xA1, type, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}); }
};

TEST_F(Blanking, RewritableDiscBecomesBlankInBothWays) {
  makeDisc(MediumKind::CdRw);
  for (const auto type : Block{0, 1}) {
    writeSession(300, 1);
    writeSession(300, 2, false);
    EXPECT_EQ(blank(type), kGood) << int{type};
    EXPECT_EQ(discInformation().u8(2), 0x10U) << "erasable and blank";
    EXPECT_EQ(track(1, 0xFF).next, 0);
    EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()), 0U);
  }
}

TEST_F(Blanking, AbortedSessionAtOnceIsGoneToo) {
  makeDisc(MediumKind::CdRw);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  ASSERT_EQ(write(0, patternBytes(2048, 1)), kGood);
  EXPECT_EQ(blank(1), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x10U);
}

TEST_F(Blanking, WriteOnceDiscIsLeftAsItIs) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 1);
  EXPECT_EQ(blank(0), kIncompatibleMedium);
  EXPECT_EQ(blank(1), kIncompatibleMedium);
  EXPECT_EQ(inspect().sessions.size(), 1U);
  EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()), 300U * kSectorBytes);
}

TEST_F(Blanking, PartsOfADiscCannotBeBlanked) {
  makeDisc(MediumKind::CdRw);
  writeSession(300, 1);
  for (const auto type : Block{2, 3, 4, 5, 6}) {
    EXPECT_EQ(blank(type), kInvalidFieldInCommand) << int{type};
  }
}

TEST_F(Blanking, InterruptedBlankingIsCarriedToItsEnd) {
  makeDisc(MediumKind::CdRw);
  writeSession(300, 1);
  DiscState blankDisc;
  blankDisc.medium = MediumKind::CdRw;
  writeFile(disc() / "disc.json", blankingToJson(blankDisc));
  EXPECT_EQ(discInformation().u8(2), 0x10U);
  EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()), 0U);
  EXPECT_EQ(contentOf(disc() / "disc.json"), discToJson(blankDisc));
}

}  // namespace
}  // namespace kelvane::virtualdrive

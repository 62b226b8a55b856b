// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

class Identity : public DriveTest {
 protected:
  /// The features that GET CONFIGURATION lists with their current bits.
  std::map<unsigned, bool> features(std::uint8_t scope = 0) {
    const auto reply = ask({0x46, scope, 0, 0, 0, 0, 0, 0x10, 0, 0});
    EXPECT_EQ(reply.i32(0) + 4, static_cast<std::int32_t>(reply.data.size()));
    std::map<unsigned, bool> found;
    for (std::size_t at = 8; at < reply.data.size(); at += 4 + reply.u8(at + 3)) {
      found[reply.u16(at)] = (reply.u8(at + 2) & 1) != 0;
    }
    return found;
  }
  unsigned currentProfile() { return ask({0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0}).u16(6); }
};

TEST_F(Identity, InquiryNamesAnOpticalDriveWithARemovableMedium) {
  makeDisc(MediumKind::CdR);
  const auto reply = ask({0x12, 0, 0, 0, 96, 0});
  ASSERT_EQ(reply.data.size(), 96U);
  EXPECT_EQ(reply.u8(0), 0x05U);
  EXPECT_EQ(reply.u8(1), 0x80U);
  EXPECT_EQ(reply.u8(4), 91U);
  EXPECT_EQ(std::string(reply.data.begin() + 8, reply.data.begin() + 16), "KELVANE ");
}

TEST_F(Identity, AnswersAreCutToTheAllocationLengthAndKeepTheirLengthField) {
  makeDisc(MediumKind::CdR);
  const auto whole = ask({0x12, 0, 0, 0, 96, 0});
  const auto cut = ask({0x12, 0, 0, 0, 36, 0});
  EXPECT_EQ(cut.data, std::vector(whole.data.begin(), whole.data.begin() + 36));
  EXPECT_EQ(ask({0x12, 0, 0, 0, 96, 0}, 5).data.size(), 5U) << "never more than there is room for";
}

TEST_F(Identity, VitalProductPagesCarryASerialThatDiffersFromDriveToDrive) {
  makeDisc(MediumKind::CdR);
  const auto pages = ask({0x12, 1, 0x00, 0, 255, 0});
  EXPECT_EQ(pages.data, (std::vector<std::uint8_t>{5, 0, 0, 3, 0x00, 0x80, 0x83}));
  const auto serial = ask({0x12, 1, 0x80, 0, 255, 0});
  EXPECT_EQ(serial.u16(2), 16U);
  const auto identification = ask({0x12, 1, 0x83, 0, 255, 0});
  EXPECT_TRUE(
      std::equal(serial.data.begin() + 4, serial.data.end(), identification.data.end() - 16));

  std::string error;
  ASSERT_TRUE(VirtualDrive::create(folder_ / "other", {}, &error)) << error;
  drive_ = VirtualDrive::open(folder_ / "other", &error);
  EXPECT_NE(ask({0x12, 1, 0x80, 0, 255, 0}).data, serial.data);
}

TEST_F(Identity, UnknownPageIsRefused) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(ask({0x12, 1, 0xB1, 0, 255, 0}).sense, kInvalidFieldInCommand);
  EXPECT_EQ(ask({0x12, 0, 0x80, 0, 255, 0}).sense, kInvalidFieldInCommand);
}

TEST_F(Identity, CurrentProfileIsThatOfTheMediumAndNoneWithoutOne) {
  makeDisc(MediumKind::CdRw);
  EXPECT_EQ(currentProfile(), 0x000AU);
  EXPECT_EQ(send({0x1B, 0, 0, 0, 2, 0}), kGood);
  EXPECT_EQ(currentProfile(), 0U);
}

TEST_F(Identity, WritingFeaturesAreCurrentOnlyWhileTheDiscCanBeWritten) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(currentProfile(), 0x0009U);
  EXPECT_TRUE(features().at(0x002D));
  EXPECT_TRUE(features().at(0x002E));
  writeSession(300, 1, false);
  EXPECT_FALSE(features().at(0x002D));
  EXPECT_FALSE(features().at(0x002E));
  EXPECT_TRUE(features().at(0x001E)) << "it can still be read";
}

TEST_F(Identity, FeaturesCanBeAskedForOneByOneOrTheCurrentOnesOnly) {
  makeDisc(MediumKind::CdR);
  const auto one = ask({0x46, 2, 0, 0x2D, 0, 0, 0, 0, 64, 0});
  EXPECT_EQ(one.data.size(), 16U);
  EXPECT_EQ(one.u16(8), 0x002DU);
  EXPECT_EQ(ask({0x46, 2, 0, 0x40, 0, 0, 0, 0, 64, 0}).data.size(), 8U) << "no BD reading here";
  EXPECT_EQ(features(1).count(0x0037), 0U) << "CD-RW writing is not current with a CD-R";
  EXPECT_EQ(features(0).count(0x0037), 1U);
  EXPECT_EQ(features(1).count(0x002F), 0U) << "nor is DVD writing";
  EXPECT_EQ(features(0).count(0x002F), 1U);
}

TEST_F(Identity, CommandsOfOtherDevicesAreRefused) {
  makeDisc(MediumKind::CdR);
  // REPORT KEY, SEND KEY, ATA PASS-THROUGH, WRITE BUFFER, SEND DISC STRUCTURE
  for (const auto operation : Block{0xA4, 0xA3, 0x85, 0x3B, 0xBF}) {
    EXPECT_EQ(ask({operation, 0, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0}).sense, kUnknownCommand)
        << int{operation};
  }
  EXPECT_EQ(send({0x04, 0x11, 0, 0, 0, 0}, std::string("\0\x02\0\x08\0\0\0\0\0\0\0\0", 12)),
            kIncompatibleMedium)
      << "FORMAT UNIT";
}

}  // namespace
}  // namespace kelvane::virtualdrive

// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

class Reading : public DriveTest {};

TEST_F(Reading, RunOutAndGapsCannotBeReadAndBeyondTheDiscThereIsNothing) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 1);
  writeSession(300, 2);
  EXPECT_EQ(read(300, 1).sense, kUnrecoveredRead) << "run-out";
  EXPECT_EQ(read(299, 2).sense, kUnrecoveredRead) << "data and run-out";
  EXPECT_EQ(read(6000, 1).sense, kUnrecoveredRead) << "between the sessions";
  EXPECT_EQ(read(0, 12000).sense, kUnrecoveredRead) << "across the sessions";
  EXPECT_EQ(read(11702 + 300, 1).sense, kUnrecoveredRead);
  EXPECT_EQ(read(11702 + 302, 1).sense, kAddressOutOfRange);
  EXPECT_EQ(read(-1, 1).sense, kAddressOutOfRange);
  EXPECT_EQ(ask({0xA8, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}).sense, kAddressOutOfRange);
}

TEST_F(Reading, BlankDiscHoldsNothing) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(read(0, 1).sense, kAddressOutOfRange);
  EXPECT_EQ(read(0, 0).sense, kGood) << "no sectors, no error";
}

TEST_F(Reading, LongAndShortFormGiveTheSame) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 5);
  const auto data = patternBytes(300 * kSectorBytes, 5);
  const auto longForm = ask({0xA8, 0, 0, 0, 0, 10, 0, 0, 0, 20, 0, 0});
  EXPECT_EQ(std::string(longForm.data.begin(), longForm.data.end()),
            data.substr(10 * kSectorBytes, 20 * kSectorBytes));
  EXPECT_EQ(readText(10, 20), data.substr(10 * kSectorBytes, 20 * kSectorBytes));
}

TEST_F(Reading, ReadCdGivesTheUserDataOfDataSectors) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 5);
  const auto reply = ask({0xBE, 0, 0, 0, 0, 1, 0, 0, 2, 0x10, 0, 0});
  EXPECT_EQ(std::string(reply.data.begin(), reply.data.end()),
            patternBytes(300 * kSectorBytes, 5).substr(2048, 4096));
  EXPECT_EQ(ask({0xBE, 4, 0, 0, 0, 1, 0, 0, 2, 0x10, 0, 0}).sense, kIllegalModeForTrack)
      << "audio was expected";
  EXPECT_EQ(ask({0xBE, 0, 0, 0, 0, 1, 0, 0, 2, 0xF8, 0, 0}).sense, kInvalidFieldInCommand)
      << "headers and parity are not kept";
}

TEST_F(Reading, NoMoreIsGivenThanThereIsRoomFor) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 5);
  const auto reply = ask({0x28, 0, 0, 0, 0, 0, 0, 0, 4, 0}, 3000);
  EXPECT_EQ(reply.sense, kGood);
  EXPECT_EQ(reply.data.size(), 3000U);
}

TEST_F(Reading, HolesInTheFileReadAsZeros) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 1);
  ASSERT_EQ(write(11702, patternBytes(2048, 2)), kGood);
  ASSERT_EQ(synchronize(), kGood);
  EXPECT_EQ(readText(11703, 1), std::string(2048, '\0')) << "padding";
}

}  // namespace
}  // namespace kelvane::virtualdrive

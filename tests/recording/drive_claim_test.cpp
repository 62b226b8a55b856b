// SPDX-License-Identifier: GPL-2.0-or-later
// A loop device is claimed in the place of a drive: to the kernel both are block devices.
#include "platform/recording/drive_claim.h"

#include <gtest/gtest.h>

#include "platform/recording/drive.h"
#include "recording/scripted_transport.h"

namespace kelvane {
namespace {

constexpr char kNode[] = "/dev/loop0";

class DriveClaimTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (DriveClaim::take(kNode) == nullptr) GTEST_SKIP() << "no loop device that can be opened";
  }
};

DriveIdentity identityOf(const std::string& node) {
  DriveIdentity identity;
  identity.programPath = node;
  return identity;
}

std::unique_ptr<mmc::Transport> silentTransport() {
  return std::make_unique<testing::ScriptedTransport>();
}

TEST(DriveClaim, ThereIsNoneToWhatIsNotThere) {
  EXPECT_EQ(DriveClaim::take("/dev/no-such-drive"), nullptr);
}

TEST_F(DriveClaimTest, ADriveIsClaimedByOneAtATime) {
  auto first = DriveClaim::take(kNode);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(DriveClaim::take(kNode), nullptr);
  first.reset();
  EXPECT_NE(DriveClaim::take(kNode), nullptr);
}

TEST_F(DriveClaimTest, OthersMayMountAgainWhenTheyAreLetOrARecorderNeedsTheDrive) {
  Drive drive(identityOf(kNode), silentTransport());
  ASSERT_TRUE(drive.keepOthersFromMounting());
  EXPECT_TRUE(drive.keepOthersFromMounting()) << "asked for twice";
  EXPECT_EQ(DriveClaim::take(kNode), nullptr);
  drive.letOthersMount();
  EXPECT_NE(DriveClaim::take(kNode), nullptr);

  ASSERT_TRUE(drive.keepOthersFromMounting());
  drive.leaveAlone();
  EXPECT_NE(DriveClaim::take(kNode), nullptr);
}

TEST_F(DriveClaimTest, ADriveThatAnotherHasCannotBeKeptFromHim) {
  const auto another = DriveClaim::take(kNode);
  Drive drive(identityOf(kNode), silentTransport());
  EXPECT_FALSE(drive.keepOthersFromMounting());
}

TEST_F(DriveClaimTest, AnEmulatedDriveNeedsNone) {
  DriveIdentity identity = identityOf(kNode);
  identity.emulatedDisc = "/disc.kvdisc";
  Drive drive(identity, silentTransport());
  EXPECT_TRUE(drive.keepOthersFromMounting());
  EXPECT_NE(DriveClaim::take(kNode), nullptr);
}

}  // namespace
}  // namespace kelvane

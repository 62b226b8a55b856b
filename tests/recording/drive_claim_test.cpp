// SPDX-License-Identifier: GPL-2.0-or-later
// A loop device is claimed in the place of a drive: to the kernel both are block devices.
#include "platform/recording/drive_claim.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/recording/dr_device.h"
#include "platform/recording/drive.h"
#include "platform/recording/file_lock.h"
#include "recording/scripted_transport.h"

namespace kelvane {
namespace {

constexpr char kNode[] = "/dev/loop0";

class DriveClaimTest : public ::testing::Test {
 protected:
  // Tests of this file that run at the same time wait for each other.
  void SetUp() override {
    turn_ = FileLock::acquire(kNode, std::chrono::minutes(1));
    if (DriveClaim::take(kNode) == nullptr) GTEST_SKIP() << "no loop device that can be opened";
  }

 private:
  std::optional<FileLock> turn_;
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

TEST_F(DriveClaimTest, OthersMayMountAgainWhenTheyAreLet) {
  Drive drive(identityOf(kNode), silentTransport());
  ASSERT_TRUE(drive.keepOthersFromMounting());
  EXPECT_TRUE(drive.keepOthersFromMounting()) << "asked for twice";
  EXPECT_EQ(DriveClaim::take(kNode), nullptr);
  drive.letOthersMount();
  EXPECT_NE(DriveClaim::take(kNode), nullptr);
}

TEST_F(DriveClaimTest, WhenADriveIsLeftAloneForARecordingOthersStillMayNot) {
  Drive drive(identityOf(kNode), silentTransport());
  ASSERT_TRUE(drive.keepOthersFromMounting());
  drive.leaveAlone();
  EXPECT_EQ(DriveClaim::take(kNode), nullptr);
}

/// A program in the place of a recorder. It runs until the object goes.
class Recorder {
 public:
  explicit Recorder(DRDevice& device) {
    task_.setLaunchPath("/bin/sleep");
    task_.setArguments({"600"});
    task_.setSession(ChildTask::Session::OfItsOwn);
    const DriveClaimHandover handover = device.handClaimOver(task_);
    EXPECT_TRUE(task_.launch()) << task_.launchError();
  }
  ~Recorder() {
    task_.kill();
    task_.waitBlocking(-1);
  }

  /// Whether one of the program's descriptors leads to `node`.
  bool holds(const std::string& node) const {
    const std::string folder = "/proc/" + std::to_string(task_.processIdentifier()) + "/fd";
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failure)) {
      if (std::filesystem::read_symlink(entry, failure) == node) return true;
    }
    return false;
  }

 private:
  ChildTask task_;
};

TEST_F(DriveClaimTest, ARecorderHasTheClaimFromItsStartToItsEnd) {
  DRDevice device(std::make_unique<Drive>(identityOf(kNode), silentTransport()));
  ASSERT_TRUE(device.drive()->keepOthersFromMounting());
  {
    const Recorder recorder(device);
    EXPECT_TRUE(recorder.holds(kNode));
    EXPECT_EQ(DriveClaim::take(kNode), nullptr);
    EXPECT_FALSE(device.drive()->keepOthersFromMounting()) << "the claim is the recorder's now";
  }
  EXPECT_NE(DriveClaim::take(kNode), nullptr);
}

TEST_F(DriveClaimTest, ARecorderGetsAClaimAlsoWhereThereWasNone) {
  DRDevice device(std::make_unique<Drive>(identityOf(kNode), silentTransport()));
  const Recorder recorder(device);
  EXPECT_TRUE(recorder.holds(kNode));
}

TEST_F(DriveClaimTest, WhatAnotherHasClaimedIsNotHandedOver) {
  const auto another = DriveClaim::take(kNode);
  DRDevice device(std::make_unique<Drive>(identityOf(kNode), silentTransport()));
  const Recorder recorder(device);
  EXPECT_FALSE(recorder.holds(kNode));
}

/// The environment of a program that has inherited `descriptor`.
class Inheritance {
 public:
  explicit Inheritance(const std::string& descriptor) {
    setenv(kInheritedClaimVariable, descriptor.c_str(), 1);
  }
  ~Inheritance() { unsetenv(kInheritedClaimVariable); }
};

TEST_F(DriveClaimTest, AnInheritedClaimIsKnownByItsDrive) {
  EXPECT_EQ(inheritedClaim(kNode), std::nullopt);
  const auto claim = DriveClaim::take(kNode);
  const Inheritance inheritance(std::to_string(claim->descriptor()));
  EXPECT_EQ(inheritedClaim(kNode), claim->descriptor());
  EXPECT_EQ(inheritedClaim("/dev/loop1"), std::nullopt);
  EXPECT_EQ(inheritedClaim("/dev/no-such-drive"), std::nullopt);
}

TEST_F(DriveClaimTest, WhatIsNoDescriptorOfADriveIsNoClaim) {
  for (const char* text : {"", "1", "-1", "999999", "word", "3x"}) {
    const Inheritance inheritance(text);
    EXPECT_EQ(inheritedClaim(kNode), std::nullopt) << text;
  }
}

TEST_F(DriveClaimTest, AProgramThatMakesItsOwnClaimIsNotHinderedByTheInheritedOne) {
  const auto claim = DriveClaim::take(kNode);
  const int inheritable = dup(claim->descriptor());
  const Inheritance inheritance(std::to_string(inheritable));
  endInheritedClaimAtExec(kNode);
  EXPECT_EQ(fcntl(inheritable, F_GETFD), FD_CLOEXEC);
  close(inheritable);
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

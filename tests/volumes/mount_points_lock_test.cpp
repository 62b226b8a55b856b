// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/mount_points_lock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "volumes/temporary_prefix.h"

namespace kelvane {
namespace {

TEST(MountPointsLockTest, ASecondInstanceIsToldThatOneIsRunning) {
  const test::TemporaryPrefix prefix;
  std::string error;
  const auto first = MountPointsLock::acquire(&error);
  ASSERT_TRUE(first.has_value()) << error;
  EXPECT_FALSE(MountPointsLock::acquire(&error).has_value());
  EXPECT_EQ(error, "KelvaneFS is running already. One disc can be open at a time on a machine.");
}

TEST(MountPointsLockTest, TheLockEndsWithItsObjectAndLeavesNoFile) {
  const test::TemporaryPrefix prefix;
  std::string error;
  {
    auto lock = MountPointsLock::acquire(&error);
    ASSERT_TRUE(lock.has_value());
    const MountPointsLock moved = std::move(*lock);
    lock.reset();
    EXPECT_FALSE(MountPointsLock::acquire(&error).has_value());
  }
  EXPECT_TRUE(std::filesystem::is_empty(prefix.path() + "/tmp"));
  EXPECT_TRUE(MountPointsLock::acquire(&error).has_value());
}

TEST(MountPointsLockTest, TheLockOfAKilledProcessIsFree) {
  const test::TemporaryPrefix prefix;
  std::string error;
  const pid_t child = fork();
  if (child == 0) {
    const auto lock = MountPointsLock::acquire(&error);
    _exit(lock.has_value() ? 0 : 1);  // Ends without any clean-up, as a killed process does.
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  EXPECT_FALSE(std::filesystem::is_empty(prefix.path() + "/tmp"));
  EXPECT_TRUE(MountPointsLock::acquire(&error).has_value()) << error;
}

TEST(MountPointsLockTest, ALinkInThePlaceOfTheFileIsNotFollowed) {
  const test::TemporaryPrefix prefix;
  std::filesystem::create_symlink(prefix.path() + "/elsewhere",
                                  prefix.path() + "/tmp/.kelvanefs.lock");
  std::string error;
  EXPECT_FALSE(MountPointsLock::acquire(&error).has_value());
  EXPECT_NE(error.find("cannot be opened"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(prefix.path() + "/elsewhere"));
}

TEST(MountPointsLockTest, AMissingTemporaryFolderIsAFailureWithItsReason) {
  const test::TemporaryPrefix prefix;
  std::filesystem::remove(prefix.path() + "/tmp");
  std::string error;
  EXPECT_FALSE(MountPointsLock::acquire(&error).has_value());
  EXPECT_NE(error.find("No such file or directory"), std::string::npos);
}

}  // namespace
}  // namespace kelvane

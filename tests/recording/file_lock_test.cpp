// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/file_lock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>
#include <utility>

#include "foundation/temporary_folder.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kNoPatience{0};

TEST(FileLock, ExcludesOthersUntilItIsDestroyed) {
  const testing::TemporaryFolder folder;
  const std::string path = folder.file("");
  EXPECT_FALSE(FileLock::isHeld(path));
  {
    const auto lock = FileLock::acquire(path, kNoPatience);
    ASSERT_TRUE(lock);
    EXPECT_TRUE(FileLock::isHeld(path));
    EXPECT_FALSE(FileLock::acquire(path, kNoPatience));
  }
  EXPECT_FALSE(FileLock::isHeld(path));
}

TEST(FileLock, GoesWithTheObjectItIsMovedTo) {
  const testing::TemporaryFolder folder;
  const std::string path = folder.file("");
  auto lock = FileLock::acquire(path, kNoPatience);
  ASSERT_TRUE(lock);
  {
    const FileLock moved = std::move(*lock);
    lock.reset();
    EXPECT_TRUE(FileLock::isHeld(path));
  }
  EXPECT_FALSE(FileLock::isHeld(path));
}

TEST(FileLock, CannotBeHadOnAPathThatDoesNotExist) {
  EXPECT_FALSE(FileLock::acquire("/no/such/path", kNoPatience));
  EXPECT_FALSE(FileLock::isHeld("/no/such/path"));
}

TEST(FileLock, IsWaitedForAsLongAsPatienceLasts) {
  const testing::TemporaryFolder folder;
  auto held = FileLock::acquire(folder.file(""), kNoPatience);
  std::thread releaser([&held] { held.reset(); });
  EXPECT_TRUE(FileLock::acquire(folder.file(""), std::chrono::seconds(60)));
  releaser.join();
}

TEST(FileLock, EndsWithTheProcessThatHeldIt) {
  const testing::TemporaryFolder folder;
  const std::string path = folder.file("");
  const pid_t child = fork();
  if (child == 0) {
    const auto lock = FileLock::acquire(path, kNoPatience);
    _exit(lock ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_FALSE(FileLock::isHeld(path));
}

}  // namespace
}  // namespace kelvane

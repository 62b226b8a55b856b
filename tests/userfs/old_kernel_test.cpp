// SPDX-License-Identifier: GPL-2.0-or-later
// Names are invalidated one by one where the kernel cannot drop them all at once.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "platform/userfs/gm_user_file_system.h"
#include "platform/userfs/mount_point.h"
#include "platform/userfs/mount_session.h"
#include "platform/userfs/volume.h"
#include "userfs/memory_delegate.h"
#include "userfs/mount_watcher.h"

namespace kelvane::tests {
namespace {

/// Serves one volume on a thread of its own, as GMUserFileSystem does, for a chosen kernel.
class OldKernel : public testing::Test {
 protected:
  void SetUp() override {
    std::string reason;
    if (!GMUserFileSystem::isAvailable(&reason)) GTEST_SKIP() << reason;
    delegate.addDirectory("/from");
    delegate.add("/from/item", "text");
    point.emplace(*userfs::MountPoint::prepare(folder.path() + "/volume", &reason));
    session = userfs::MountSession::mount(&volume, options, point->path(), &reason);
    ASSERT_NE(session, nullptr) << reason;
    server = std::thread([this] { session->serve([] {}); });
  }
  void TearDown() override {
    if (session != nullptr) session->stop();
    if (server.joinable()) server.join();
    session.reset();
  }
  bool exists(const std::string& path) const {
    struct stat status = {};
    return lstat((point->path() + path).c_str(), &status) == 0;
  }

  TemporaryFolder folder;
  MemoryDelegate delegate;
  userfs::MountOptions options = userfs::parseMountOptions({"negative_vncache"});
  std::optional<userfs::MountPoint> point;
  userfs::Volume volume{&delegate, options, userfs::KernelCaches::NameInvalidation::OneByOne};
  std::unique_ptr<userfs::MountSession> session;
  std::thread server;
};

TEST_F(OldKernel, NamesBelowAMovedDirectoryAreLookedUpAgainSoon) {
  EXPECT_TRUE(exists("/from/item"));
  EXPECT_FALSE(exists("/from/later"));
  ASSERT_EQ(std::rename((point->path() + "/from").c_str(), (point->path() + "/to").c_str()), 0);
  // Another item appears below it without the kernel's knowledge, as the disc's own may.
  delegate.add("/to/later", "text");
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!exists("/to/later") && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(exists("/to/later"));
}

TEST_F(OldKernel, ABusyDirectoryDoesNotStopTheInvalidation) {
  std::atomic<bool> done = false;
  std::thread busy([&] {
    while (!done) {
      (void)exists("/nothing-" + std::to_string(rand()));
    }
  });
  for (int round = 0; round < 200; ++round) {
    const std::string from = point->path() + (round % 2 == 0 ? "/from" : "/to");
    const std::string to = point->path() + (round % 2 == 0 ? "/to" : "/from");
    ASSERT_EQ(std::rename(from.c_str(), to.c_str()), 0);
  }
  done = true;
  busy.join();
}

}  // namespace
}  // namespace kelvane::tests

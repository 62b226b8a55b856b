// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <optional>
#include <thread>

#include "helpers/workshop.h"

namespace kelvane::test {

namespace fs = std::filesystem;

inline constexpr const char* kIsoMountProgram = KELVANE_LIBEXEC_DIR "/isomount";

/// Whether this user can mount here at all.
inline bool fuseIsUsable() {
  return access("/dev/fuse", R_OK | W_OK) == 0;
}

/// False where the condition has not come to hold after a time that is far longer than it can take,
/// though shorter than the one after which a test is killed. A volume that was unmounted is served
/// as long as another test's mount namespace has a copy of the mount.
inline bool waitFor(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(100);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

/// The line of the mount table for `path`.
inline std::optional<std::string> mountLine(const fs::path& path) {
  std::ifstream table("/proc/self/mountinfo");
  for (std::string line; std::getline(table, line);) {
    if (line.find(" " + path.string() + " ") != std::string::npos) return line;
  }
  return std::nullopt;
}

/// The process among whose arguments is `path`.
inline std::optional<fs::path> processWith(const fs::path& path) {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", ignored)) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    const std::string words = readFile(entry.path() / "cmdline");
    if (words.find(path.string()) != std::string::npos) return entry.path();
  }
  return std::nullopt;
}

inline void unmount(const fs::path& path) {
  if (geteuid() == 0) {
    umount2(path.c_str(), 0);
  } else {
    run({"fusermount3", "-u", path});
  }
}

/// A tree, a disc image built from it and a folder to mount that on; nothing is left of them.
class IsoMount : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(tree());
    fs::create_directory(mountPoint());
  }

  void TearDown() override {
    while (mountLine(mountPoint())) {
      unmount(mountPoint());
      if (mountLine(mountPoint())) run({"fusermount3", "-u", "-z", mountPoint()});
    }
    EXPECT_TRUE(waitFor([&] { return !processWith(mountPoint()); })) << "a process is left";
  }

  [[nodiscard]] fs::path tree() const { return workshop_ / "tree"; }
  [[nodiscard]] fs::path image() const { return workshop_ / "disc.iso"; }
  [[nodiscard]] fs::path mountPoint() const { return workshop_ / "mount"; }

  void build(const std::vector<std::string>& options = {"-R"}) {
    std::vector<std::string> words = {"genisoimage", "-quiet", "-input-charset", "utf-8"};
    words.insert(words.end(), options.begin(), options.end());
    words.insert(words.end(), {"-o", image(), tree()});
    mustRun(words);
  }

  RunResult mount(std::vector<std::string> options = {}) {
    std::vector<std::string> words = {kIsoMountProgram, "--source", image()};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(mountPoint());
    return run(words);
  }

  void mustMount(std::vector<std::string> options = {}) {
    const RunResult result = mount(std::move(options));
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
  }

  Workshop workshop_;
};

#define NEEDS_FUSE() \
  if (!fuseIsUsable()) GTEST_SKIP() << "this user may not use /dev/fuse"

}  // namespace kelvane::test

// SPDX-License-Identifier: GPL-2.0-or-later
#include "volumes/disc_fixture.h"

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/foundation/child_task.h"
#include "platform/volumes/disc_mount.h"

namespace kelvane::test {

bool runProgram(const std::vector<std::string>& words) {
  ChildTask task;
  task.setLaunchPath(words.front());
  task.setArguments({words.begin() + 1, words.end()});
  if (!task.launch()) return false;
  task.waitBlocking(-1);
  return task.terminationStatus() == 0;
}

void awaitEndOfProgram() {
  siginfo_t ended = {};
  // Also of one whose end sends no signal.
  waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT | __WALL);
}

void DiscFixture::SetUp() {
  if (access("/dev/fuse", R_OK | W_OK) != 0) GTEST_SKIP() << "this user may not use /dev/fuse";
}

std::string DiscFixture::discFolder(const std::string& drive) const {
  return prefix_.path() + "/" + drive + ".kvdisc";
}

void DiscFixture::announceDrives() {
  std::string lines;
  for (const char* drive : {"kv0", "kv1", "kv2"}) {
    if (!std::filesystem::exists(discFolder(drive))) continue;
    lines += std::string(drive) + "=" + discFolder(drive) + "\n";
  }
  drives_.reset();
  drives_.emplace("KELVANEFS_EMULATED_DRIVES", lines);
}

void DiscFixture::makeDisc(const std::string& drive, const std::string& volumeName) {
  const std::string content = prefix_.path() + "/content";
  std::filesystem::create_directories(content);
  std::ofstream(content + "/hello") << "hello from " << volumeName << "\n";
  std::filesystem::create_directories(discFolder(drive));
  ASSERT_TRUE(runProgram({"genisoimage", "-quiet", "-r", "-J", "-V", volumeName, "-o",
                          discFolder(drive) + "/sectors", content}));
  announceDrives();
}

void DiscFixture::appendSession(const std::string& drive, const std::string& volumeName,
                                int64_t start) {
  constexpr int64_t kSectorSize = 2048;
  const std::string sectors = discFolder(drive) + "/sectors";
  const std::string image = prefix_.path() + "/session.iso";
  ASSERT_TRUE(
      runProgram({"genisoimage", "-quiet", "-r", "-J", "-V", volumeName, "-o", image, "-M", sectors,
                  "-C", "0," + std::to_string(start), prefix_.path() + "/content"}));
  std::ofstream disc(sectors, std::ios::binary | std::ios::in);
  disc.seekp(start * kSectorSize);
  disc << std::ifstream(image, std::ios::binary).rdbuf();
}

void DiscFixture::makeForeignDisc(const std::string& drive) {
  std::filesystem::create_directories(discFolder(drive));
  std::ofstream(discFolder(drive) + "/sectors") << std::string(40 * 2048, 'x');
  announceDrives();
}

void DiscFixture::mountAt(const std::string& drive, const std::string& mountPoint) {
  std::filesystem::create_directories(mountPoint);
  std::string error;
  ASSERT_TRUE(mountDisc({drive + "s0", 0, mountPoint}, &error)) << error;
}

}  // namespace kelvane::test

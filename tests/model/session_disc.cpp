// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/session_disc.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <utility>

#include "burn/mkisofs_arguments.h"
#include "model/volume_runner.h"
#include "overlayfs/overlay_trees.h"

namespace kelvane::model {
namespace {

namespace fs = std::filesystem;
using tests::CommandResult;
using tests::runShell;

constexpr uint64_t kSector = 2048;
// As far as the next session of a CD lies behind the last one.
constexpr uint64_t kGap = 11402;

std::string shellWord(const std::string& word) {
  std::string result = "'";
  for (const char character : word)
    result += character == '\'' ? "'\\''" : std::string(1, character);
  return result + "'";
}

std::string runMkisofs(const SessionImageRequest& request) {
  std::string command = "mkisofs";
  for (const std::string& word : mkisofsArguments(request)) command += " " + shellWord(word);
  const CommandResult result = runShell(command);
  if (result.status == 0) return {};
  return "mkisofs ended with " + std::to_string(result.status) + ": " +
         result.output.substr(0, 600);
}

void writeTree(const Tree& tree, const std::string& root) {
  for (const auto& [path, entry] : tree) {
    const std::string full = root + path;
    fs::create_directories(fs::path(full).parent_path());
    if (entry.type == 'd') fs::create_directories(full);
    if (entry.type == 'l') fs::create_symlink(entry.content, full);
    if (entry.type != 'f') continue;
    tests::writeFile(full, entry.content);
    const timespec time{static_cast<time_t>(entry.modified.value_or(0)), 0};
    const timespec times[2] = {time, time};
    utimensat(AT_FDCWD, full.c_str(), times, 0);
  }
}

}  // namespace

SessionDisc::SessionDisc(std::string folder, std::string mountPoint)
    : folder_(std::move(folder)), mountPoint_(std::move(mountPoint)) {}

SessionDisc::~SessionDisc() {
  unmount();
}

std::string SessionDisc::makeFrom(const Tree& tree) {
  const std::string source = folder_ + "/source";
  fs::create_directories(source);
  writeTree(tree, source);
  const std::string failure = runMkisofs({"0", "MODEL", folder_ + "/session.iso", "", "", source});
  return failure.empty() ? appendImage() : failure;
}

std::string SessionDisc::addSession(const std::string& overlayDirectory,
                                    const std::string& hideList) {
  const std::string session = std::to_string(lastStart_) + "," + std::to_string(nextStart_);
  const std::string failure =
      runMkisofs({session, "MODEL", folder_ + "/session.iso", hideList, disc(), overlayDirectory});
  return failure.empty() ? appendImage() : failure;
}

std::string SessionDisc::appendImage() {
  std::error_code failure;
  const uint64_t length = fs::file_size(folder_ + "/session.iso", failure);
  if (failure) return "no image: " + failure.message();
  std::ofstream(disc(), std::ios::app).close();
  std::ifstream image(folder_ + "/session.iso", std::ios::binary);
  std::fstream file(disc(), std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(nextStart_ * kSector));
  file << image.rdbuf();
  if (!file.good()) return "cannot write the disc";
  lastStart_ = nextStart_;
  nextStart_ += (length + kSector - 1) / kSector + kGap;
  return {};
}

std::string SessionDisc::mount() {
  const CommandResult result =
      runShell(shellWord(KELVANE_LIBEXEC_DIR "/isomount") + " --source " + shellWord(disc()) +
               " --session " + std::to_string(lastStart_) + " " + shellWord(mountPoint_));
  isMounted_ = result.status == 0;
  return isMounted_ ? std::string() : "isomount: " + result.output;
}

void SessionDisc::unmount() {
  if (!std::exchange(isMounted_, false)) return;
  if (geteuid() == 0) {
    if (umount2(mountPoint_.c_str(), 0) != 0) umount2(mountPoint_.c_str(), MNT_DETACH);
  } else {
    runShell("fusermount3 -u -z " + shellWord(mountPoint_));
  }
}

std::string SessionDisc::readByXorriso(Tree* tree) const {
  const std::string target = folder_ + "/extracted";
  const CommandResult result =
      runShell("chmod -R u+rwX " + shellWord(target) + " 2>/dev/null; rm -rf " + shellWord(target) +
               "; xorriso -osirrox on -load sbsector " + std::to_string(lastStart_) +
               " -indev stdio:" + shellWord(disc()) + " -extract / " + shellWord(target));
  if (result.status != 0) return "xorriso: " + result.output;
  *tree = readTree(target);
  return {};
}

}  // namespace kelvane::model

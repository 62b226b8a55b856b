// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/overlay_trees.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kelvane::tests {
namespace fs = std::filesystem;

namespace {

constexpr mode_t kWriteForAll = 0222;

// std::filesystem cannot remove what lies in a directory without write permission.
void makeRemovable(const fs::path& folder) {
  std::error_code failure;
  fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, failure);
  for (const auto& entry : fs::directory_iterator(folder, failure)) {
    if (!entry.is_symlink() && entry.is_directory()) makeRemovable(entry.path());
  }
}

}  // namespace

OverlayTrees::OverlayTrees() {
  std::string pattern = (fs::temp_directory_path() / "kelvane-overlay-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  root_ = pattern;
  fs::create_directories(root_ + "/tmp");
  fs::create_directories(root_ + "/Volumes");
  fs::create_directories(disc());
  setenv("KELVANEFS_PREFIX", root_.c_str(), 1);
}

OverlayTrees::~OverlayTrees() {
  unsetenv("KELVANEFS_PREFIX");
  makeRemovable(root_);
  std::error_code failure;
  fs::remove_all(root_, failure);
}

void OverlayTrees::addDiscFile(const std::string& path, std::string_view content,
                               mode_t mode) const {
  chmod(disc().c_str(), 0755);  // It may have been sealed.
  fs::create_directories(fs::path(disc() + path).parent_path());
  writeFile(disc() + path, content);
  chmod((disc() + path).c_str(), mode);
}

void OverlayTrees::addDiscDirectory(const std::string& path, mode_t mode) const {
  fs::create_directories(disc() + path);
  chmod((disc() + path).c_str(), mode);
}

void OverlayTrees::addDiscLink(const std::string& path, const std::string& text) const {
  fs::create_directories(fs::path(disc() + path).parent_path());
  fs::create_symlink(text, disc() + path);
}

void OverlayTrees::sealDisc() const {
  for (const auto& entry : fs::recursive_directory_iterator(disc())) {
    if (entry.is_symlink()) continue;
    chmod(entry.path().c_str(), statusOf(entry.path()).st_mode & ~kWriteForAll & 07777);
  }
  chmod(disc().c_str(), 0555);
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "<missing>";
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void writeFile(const std::string& path, std::string_view content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

std::vector<std::string> namesIn(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool exists(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0;
}

struct stat statusOf(const std::string& path) {
  struct stat status = {};
  lstat(path.c_str(), &status);
  return status;
}

CommandResult runShell(const std::string& command) {
  CommandResult result;
  FILE* const pipe = popen(("{ " + command + "\n} 2>&1 </dev/null").c_str(), "r");
  if (pipe == nullptr) return result;
  std::array<char, 4096> buffer;
  size_t count = 0;
  while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
    result.output.append(buffer.data(), count);
  }
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

}  // namespace kelvane::tests

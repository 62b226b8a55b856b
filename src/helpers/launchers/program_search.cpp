// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/launchers/program_search.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kelvane::launchers {
namespace {

constexpr std::string_view kLastFolder = "/usr/bin";

bool isSameFile(const struct stat& file, const std::string& otherPath) {
  struct stat other = {};
  return stat(otherPath.c_str(), &other) == 0 && file.st_dev == other.st_dev &&
         file.st_ino == other.st_ino;
}

bool isUsable(const std::string& path, const std::string& ownFile) {
  struct stat file = {};
  if (stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode)) return false;
  return access(path.c_str(), X_OK) == 0 && !isSameFile(file, ownFile);
}

// Relative folders, the empty one among them, are left out: what lies in whatever folder the
// application was started from is not to be run.
std::vector<std::string> absoluteFolders(std::string_view searchPath) {
  std::vector<std::string> folders;
  while (!searchPath.empty()) {
    const size_t colon = searchPath.find(':');
    const std::string_view folder = searchPath.substr(0, colon);
    if (folder.starts_with('/')) folders.emplace_back(folder);
    searchPath.remove_prefix(colon == std::string_view::npos ? searchPath.size() : colon + 1);
  }
  folders.emplace_back(kLastFolder);
  return folders;
}

}  // namespace

std::optional<std::string> findProgram(const std::vector<std::string>& names,
                                       std::string_view searchPath, const std::string& ownFile) {
  const std::vector<std::string> folders = absoluteFolders(searchPath);
  for (const std::string& name : names) {
    for (const std::string& folder : folders) {
      const std::string path = folder + "/" + name;
      if (isUsable(path, ownFile)) return path;
    }
  }
  return std::nullopt;
}

int replaceByProgram(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<std::string> copies = arguments;
  std::vector<char*> words;
  for (std::string& copy : copies) words.push_back(copy.data());
  words.push_back(nullptr);
  execv(program.c_str(), words.data());
  std::fprintf(stderr, "%s cannot be run: %s\n", program.c_str(), std::strerror(errno));
  return kProgramMissing;
}

}  // namespace kelvane::launchers

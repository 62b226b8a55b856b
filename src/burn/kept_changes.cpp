// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/kept_changes.h"

#include <fcntl.h>
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>

#include "platform/foundation/own_files.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"

namespace kelvane {
namespace {

constexpr int kMostNames = 100;

bool isEmptyOwnFile(const char* path) {
  struct stat status = {};
  return plainFileState(path) == PathState::Own && lstat(path, &status) == 0 && status.st_size == 0;
}

// A pattern that fits several items does not say which of them it was made for.
void removePlaceholder(const std::string& pattern) {
  glob_t found = {};
  if (glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found) == 0 && found.gl_pathc == 1 &&
      isEmptyOwnFile(found.gl_pathv[0])) {
    unlink(found.gl_pathv[0]);
  }
  globfree(&found);
}

// The patterns of the hide list name the placeholders at their old place.
void removePlaceholders(const std::string& hideList, const std::string& overlayDirectory,
                        const std::string& kept) {
  std::ifstream patterns(hideList);
  for (std::string pattern; std::getline(patterns, pattern);) {
    if (!pattern.starts_with(overlayDirectory + "/")) continue;
    removePlaceholder(kept + pattern.substr(overlayDirectory.size()));
  }
}

bool moveToFreeName(const std::string& from, const std::string& to) {
  return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

}  // namespace

std::string keepChanges(const std::string& overlayDirectory) {
  if (directoryState(overlayDirectory) != PathState::Own) return {};
  const std::string hideList = paths::hideListFile(overlayDirectory);
  for (int number = 0; number < kMostNames; ++number) {
    std::string kept = overlayDirectory + ".kept" + (number == 0 ? "" : format("-%i", number));
    if (moveToFreeName(overlayDirectory, kept)) {
      if (plainFileState(hideList) == PathState::Own) {
        removePlaceholders(hideList, overlayDirectory, kept);
        moveToFreeName(hideList, kept + ".hide");
      }
      return kept;
    }
    if (errno != EEXIST) break;
  }
  return overlayDirectory;
}

}  // namespace kelvane

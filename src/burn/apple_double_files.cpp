// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/apple_double_files.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "platform/foundation/system_log.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;

// Taken down as a whole before anything is deleted: a directory that changes while it is read may
// skip names.
std::vector<fs::directory_entry> entriesOf(const fs::path& directory) {
  std::vector<fs::directory_entry> entries;
  std::error_code failure;
  for (fs::directory_iterator entry(directory, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    entries.push_back(*entry);
  }
  return entries;
}

}  // namespace

void removeAppleDoubleFiles(const std::string& path) {
  // A stack of our own, since a volume may be deeper than that of a thread.
  std::vector<fs::path> directories = {path};
  while (!directories.empty()) {
    const fs::path directory = std::move(directories.back());
    directories.pop_back();
    for (const fs::directory_entry& entry : entriesOf(directory)) {
      std::error_code failure;
      if (entry.path().filename().string().starts_with("._")) {
        systemLog(
            "AppleDouble files suppressed. Resourceforks and extended attributes will not be "
            "preserved.");
        fs::remove_all(entry.path(), failure);
      } else if (fs::is_directory(entry.symlink_status(failure))) {
        directories.push_back(entry.path());
      }
    }
  }
}

}  // namespace kelvane

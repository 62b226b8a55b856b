// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace kelvane::virtualdrive {

/// A folder of a test's own, which goes away with it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "virtualdrive-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
    path_ = pattern;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    // Folders that came off a disc may not be written to.
    for (auto entry = std::filesystem::recursive_directory_iterator(path_, ignored);
         entry != std::filesystem::recursive_directory_iterator(); entry.increment(ignored)) {
      if (entry->is_symlink(ignored) || !entry->is_directory(ignored)) continue;
      std::filesystem::permissions(entry->path(), std::filesystem::perms::owner_all, ignored);
    }
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream content;
  content << stream.rdbuf();
  return std::move(content).str();
}

inline void writeFile(const std::filesystem::path& file, std::string_view content) {
  std::ofstream stream(file, std::ios::binary);
  stream << content;
}

/// Bytes that differ from sector to sector and from seed to seed.
inline std::string patternBytes(std::size_t count, unsigned seed) {
  std::string bytes(count, '\0');
  std::uint32_t state = seed * 2654435761U + 1;
  for (auto& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

}  // namespace kelvane::virtualdrive

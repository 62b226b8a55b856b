// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/hidden_items.h"

#include <fnmatch.h>
#include <locale.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <unordered_set>

namespace kelvane {
namespace {

namespace fs = std::filesystem;

constexpr char kWildcards[] = "*?[\\";

/// The characters of this thread are those of the environment, as a child's are, for as long as
/// this lives. The toolkit may have chosen others for this process.
class EnvironmentCharacters {
 public:
  EnvironmentCharacters() : locale_(newlocale(LC_CTYPE_MASK, "", nullptr)) {
    if (locale_ != nullptr) before_ = uselocale(locale_);
  }
  ~EnvironmentCharacters() {
    if (locale_ == nullptr) return;
    uselocale(before_);
    freelocale(locale_);
  }
  EnvironmentCharacters(const EnvironmentCharacters&) = delete;
  EnvironmentCharacters& operator=(const EnvironmentCharacters&) = delete;

 private:
  locale_t locale_;
  locale_t before_ = nullptr;
};

class Patterns {
 public:
  explicit Patterns(const std::string& hideListFile) {
    std::ifstream file(hideListFile);
    for (std::string line; std::getline(file, line);) {
      if (line.find_first_of(kWildcards) == std::string::npos) {
        plain_.insert(line);
      } else {
        wild_.push_back(line);
      }
    }
  }

  bool hides(const std::string& path, const std::string& name) const {
    if (plain_.contains(path) || plain_.contains(name)) return true;
    return std::any_of(wild_.begin(), wild_.end(), [&](const std::string& pattern) {
      return matches(pattern, path) || matches(pattern, name);
    });
  }

 private:
  // An error of the comparison is a match to mkisofs.
  static bool matches(const std::string& pattern, const std::string& text) {
    return fnmatch(pattern.c_str(), text.c_str(), FNM_PATHNAME) != FNM_NOMATCH;
  }

  std::unordered_set<std::string> plain_;
  std::vector<std::string> wild_;
};

}  // namespace

std::optional<std::vector<HiddenItem>> itemsHiddenBesides(const std::string& overlay,
                                                          const std::string& hideListFile,
                                                          const OverlayChanges& changes,
                                                          const std::stop_token& stop) {
  const EnvironmentCharacters characters;
  const Patterns patterns(hideListFile);
  const std::unordered_set<std::string> deleted(changes.deleted.begin(), changes.deleted.end());
  std::vector<HiddenItem> hidden;
  std::vector<std::string> folders = {""};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    std::error_code failure;
    for (fs::directory_iterator entry(overlay + folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
      if (stop.stop_requested()) return std::nullopt;
      const std::string name = entry->path().filename().string();
      const std::string path = folder + "/" + name;
      if (deleted.contains(path)) continue;
      std::error_code unreadable;
      const bool isFolder = fs::is_directory(entry->symlink_status(unreadable));
      if (patterns.hides(overlay + path, name)) {
        hidden.push_back({path, isFolder});
      } else if (isFolder) {
        folders.push_back(path);
      }
    }
  }
  std::ranges::sort(hidden, {}, &HiddenItem::path);
  return hidden;
}

}  // namespace kelvane

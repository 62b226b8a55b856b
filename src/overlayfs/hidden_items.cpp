// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/hidden_items.h"

#include <fnmatch.h>
#include <locale.h>

#include <algorithm>
#include <fstream>
#include <unordered_set>

#include "platform/foundation/folder_items.h"

namespace kelvane {
namespace {

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

std::optional<HideEffects> effectsOfHiding(const std::string& overlay,
                                           const std::string& hideListFile,
                                           const OverlayChanges& changes,
                                           const std::stop_token& stop) {
  const EnvironmentCharacters characters;
  const Patterns patterns(hideListFile);
  const std::unordered_set<std::string> deleted(changes.deleted.begin(), changes.deleted.end());
  HideEffects effects;
  const bool isThrough = visitItemsBelow(overlay, stop, [&](const FolderItem& item) {
    const bool isHidden = patterns.hides(overlay + item.path, item.name);
    if (deleted.contains(item.path)) {
      if (!isHidden) effects.shownStill.push_back(item.path);
      return Visit::PassOver;
    }
    if (!isHidden) return Visit::GoOn;
    effects.hiddenToo.push_back({item.path, item.isFolder});
    return Visit::PassOver;
  });
  if (!isThrough) return std::nullopt;
  std::ranges::sort(effects.hiddenToo, {}, &HiddenItem::path);
  std::ranges::sort(effects.shownStill);
  return effects;
}

}  // namespace kelvane

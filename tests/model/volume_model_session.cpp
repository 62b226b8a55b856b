// SPDX-License-Identifier: GPL-2.0-or-later
// What the burn makes of the volume, and where that differs from what the volume showed.
#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "model/volume_model.h"

namespace kelvane::model {
namespace {

constexpr std::array kHousekeeping = {"/.TemporaryItems", "/._.TemporaryItems", "/.Trashes",
                                      "/._.Trashes"};
// Each becomes "*" in a pattern.
constexpr std::array kReplaced = {"\u00e4",  "\u00c4",  "a\u0308", "A\u0308", "\u00f6",  "\u00d6",
                                  "o\u0308", "O\u0308", "\u00fc",  "\u00dc",  "u\u0308", "U\u0308",
                                  "\u00df",  "\u1e9e",  "{",       "}",       "[",       "]"};

std::string patternFor(std::string text) {
  for (const std::string form : kReplaced) {
    for (size_t at = 0; (at = text.find(form, at)) != std::string::npos; ++at) {
      text.replace(at, form.size(), "*");
    }
  }
  return text;
}

bool isAtOrBelow(const std::string& path, const std::string& top) {
  return path == top || path.starts_with(top + "/");
}

void erase(Tree* tree, const std::string& top) {
  std::erase_if(*tree, [&](const auto& pair) { return isAtOrBelow(pair.first, top); });
}

}  // namespace

std::multiset<std::string> VolumeModel::hidePatterns() const {
  std::multiset<std::string> lines;
  for (const std::string& path : hidden_) {
    std::istringstream stream(patternFor(setting_.overlayDirectory + path));
    for (std::string line; std::getline(stream, line);) lines.insert(line);
  }
  return lines;
}

// mkisofs matches a pattern with the whole path and with the last name of what it reads from the
// overlay directory; what it takes over from the disc is not matched.
bool VolumeModel::isMatched(const std::string& path) const {
  const std::string full = setting_.overlayDirectory + path;
  const std::string name = path.substr(path.rfind('/') + 1);
  for (const std::string& pattern : hidePatterns()) {
    if (fnmatch(pattern.c_str(), full.c_str(), FNM_PATHNAME) == 0) return true;
    if (fnmatch(pattern.c_str(), name.c_str(), FNM_PATHNAME) == 0) return true;
  }
  return false;
}

Tree VolumeModel::sessionTree() const {
  Tree tree;
  addVisible("/", &tree);
  for (const char* path : kHousekeeping) {
    if (overlay_.contains(path)) erase(&tree, path);
  }
  // A pattern that does not match its own placeholder leaves that to be seen.
  for (const std::string& path : hidden_) {
    const std::string above = path.substr(0, path.rfind('/'));
    const bool hasPlace = above.empty() || (tree.contains(above) && tree.at(above).type == 'd');
    if (hasPlace && !isMatched(path)) tree[path] = Entry{'f', {}, 0, {}};
  }
  std::vector<std::string> matched;
  for (const auto& [path, entry] : tree) {
    const bool isWritten = overlay_.contains(path) || holdsPlaceholder(path);
    if (isWritten && isMatched(path)) matched.push_back(path);
  }
  for (const std::string& path : matched) erase(&tree, path);
  return tree;
}

// A placeholder has the directories above it made in the overlay directory.
bool VolumeModel::holdsPlaceholder(const std::string& directory) const {
  return std::any_of(hidden_.begin(), hidden_.end(), [&](const std::string& hidden) {
    return hidden.starts_with(directory + "/");
  });
}

// Whether a pattern hides a directory that is written anew, above one that only the disc has.
bool VolumeModel::losesItsParent(const std::string& discDirectory) const {
  if (overlay_.contains(discDirectory) || holdsPlaceholder(discDirectory)) return false;
  bool isLost = false;
  for (std::string path = discDirectory; !path.empty(); path.resize(path.rfind('/'))) {
    const auto item = overlay_.find(path);
    const bool isInOverlay = item != overlay_.end();
    if (isHidden(path) || (isInOverlay && item->second->type != 'd')) return false;
    isLost = isLost || ((isInOverlay || holdsPlaceholder(path)) && isMatched(path));
  }
  return isLost;
}

bool VolumeModel::canBeBurned() const {
  for (const auto& [path, item] : overlay_) {
    const auto old = pristine_.find(path);
    if (item->type == 'd' && old != pristine_.end() && old->second.type != 'd') return false;
  }
  return std::none_of(pristine_.begin(), pristine_.end(), [this](const auto& pair) {
    return pair.second.type == 'd' && losesItsParent(pair.first);
  });
}

}  // namespace kelvane::model

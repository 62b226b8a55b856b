// SPDX-License-Identifier: GPL-2.0-or-later
// The rules of moving.
#include <cerrno>
#include <utility>

#include "model/volume_model.h"

namespace kelvane::model {
namespace {

constexpr mode_t kReadAndWriteForAll = 0666;
constexpr char kTrash[] = "/.Trashes";

bool isAtOrBelow(const std::string& path, const std::string& top) {
  return path == top || path.starts_with(top + "/");
}

}  // namespace

int VolumeModel::checkRename(const Step& step, const Found& source, const Found& target) const {
  if (!source) return ENOENT;
  if (step.kind == StepKind::RenameNoReplace && target) return EEXIST;
  if (step.other.starts_with(step.path + "/")) return EINVAL;
  if (step.path.starts_with(step.other + "/")) return ENOTEMPTY;
  if (!target || step.path == step.other) return 0;
  const bool sourceIsDirectory = source.item->type == 'd';
  if (target.item->type != 'd') return sourceIsDirectory ? ENOTDIR : 0;
  if (!sourceIsDirectory) return EISDIR;
  return namesIn(step.other).empty() ? 0 : ENOTEMPTY;
}

Outcome VolumeModel::rename(const Step& step) {
  const Place source = walk(step.path);
  if (step.other.starts_with(kTrash)) {
    // To move there is to delete, whatever it is and has in it.
    if (!source.isDefined) return Outcome::undefined();
    if (source.code != 0 || !source.found) {
      return Outcome::failure(source.code != 0 ? source.code : ENOENT);
    }
    remove(step.path);
    return {};
  }
  const Place target = walk(step.other);
  if (!source.isDefined || !target.isDefined) return Outcome::undefined();
  if (source.code != 0) return Outcome::failure(source.code);
  if (target.code != 0) return Outcome::failure(target.code);
  if (const int code = checkRename(step, source.found, target.found)) return Outcome::failure(code);
  if (step.path == step.other) return {};
  const bool isLink = source.found.item->type == 'l';
  if (isLink) {
    moveLink(step.path, step.other, source.found);
  } else if (source.found.isOnDisc) {
    copyUp(step.path, step.other);
  } else {
    moveOverlayItem(step.path, step.other);
  }
  return {};
}

// The overlay's part moves; what the disc has at the old path is seen again.
void VolumeModel::moveOverlayItem(const std::string& from, const std::string& to) {
  std::map<std::string, Item> moved;
  for (const auto& [path, item] : overlay_) {
    if (isAtOrBelow(path, from)) moved[to + path.substr(from.size())] = item;
  }
  std::erase_if(overlay_, [&](const auto& pair) { return isAtOrBelow(pair.first, from); });
  renewDiscItems(from);
  renewDiscItems(to);
  for (const auto& [path, item] : moved) place(path, item);
}

// What is to be seen of the disc's item is copied, and the old path hidden. What was deleted in a
// directory is deleted at its new path too.
void VolumeModel::copyUp(const std::string& from, const std::string& to) {
  std::map<std::string, Item> copies;
  std::vector<std::string> deleted;
  for (const auto& [path, item] : disc_) {
    if (!isAtOrBelow(path, from)) continue;
    bool isBelowDeleted = false;
    for (const std::string& above : deleted) isBelowDeleted |= isAtOrBelow(path, above);
    if (isBelowDeleted) continue;
    if (isHidden(path)) {
      deleted.push_back(path);
      continue;
    }
    copies[to + path.substr(from.size())] = item;
  }
  renewDiscItems(from);
  renewDiscItems(to);
  hidden_.insert(from);
  overlay_.erase(to);
  for (const auto& [path, item] : copies) {
    item->mode |= kReadAndWriteForAll;
    place(path, item);
  }
  for (const std::string& path : deleted) {
    const std::string there = to + path.substr(from.size());
    // The copy brought it along, uncounted, and its removal gives back its size all the same.
    const Entry& entry = pristine_.at(path);
    written_ -= entry.type == 'd' ? setting_.directorySize(there)
                                  : static_cast<int64_t>(entry.content.size());
    if (discHas(there) && !isHidden(there)) hidden_.insert(there);
  }
}

bool VolumeModel::leadsSomewhereOnDisc(const std::string& link) const {
  const std::string& text = pristine_.at(link).content;
  // The links of our discs lead to a neighbour or nowhere.
  const auto neighbour = pristine_.find(link.substr(0, link.rfind('/') + 1) + text);
  if (neighbour == pristine_.end() || neighbour->first == link) return false;
  return neighbour->second.type != 'l' || leadsSomewhereOnDisc(neighbour->first);
}

// Whether there is something in the overlay at the path, links followed. At the end of the path
// only such a link counts as shows where it leads: not the root's, nor one that came from the disc.
bool VolumeModel::leadsSomewhereInOverlay(const std::string& path, int depth) const {
  if (path.empty() || path == "/") return true;
  if (depth == 0) return false;
  for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string above = path.substr(0, end);
    const auto found = overlay_.find(above);
    if (found == overlay_.end()) return false;
    const std::string rest = end == std::string::npos ? "" : path.substr(end);
    if (found->second->type == 'l') {
      const std::string& text = found->second->content;
      const std::string& prefix = setting_.overlayDirectory;
      if (text.starts_with(prefix + "/")) {
        return leadsSomewhereInOverlay(text.substr(prefix.size()) + rest, depth - 1);
      }
      if (rest.empty()) return false;
      if (text == prefix) return leadsSomewhereInOverlay(rest, depth - 1);
      if (text.starts_with("/")) return false;
      const std::string neighbour = above.substr(0, above.rfind('/') + 1) + text;
      return leadsSomewhereInOverlay(neighbour + rest, depth - 1);
    }
    if (end == std::string::npos) return true;
    if (found->second->type != 'd') return false;
  }
}

// A link moves as such. One that leads somewhere in its own tree is moved as it is stored; any
// other is made anew from the text that it shows, which gives back the room of what goes.
void VolumeModel::moveLink(const std::string& from, const std::string& to, const Found& source) {
  constexpr int kMostLinks = 40;
  const bool keepsText = source.isOnDisc ? leadsSomewhereOnDisc(from) && !overlay_.contains(to)
                                         : leadsSomewhereInOverlay(from, kMostLinks);
  auto link = std::make_shared<Entry>(*source.item);
  if (!keepsText) {
    link->content = setting_.overlayDirectory + shownText(link->content);
    if (overlay_.contains(to)) written_ -= sizeInOverlay(to);
  }
  renewDiscItems(to);
  if (keepsText && !source.isOnDisc) {
    overlay_.erase(from);
  } else {
    remove(from);
  }
  place(to, link);
}

}  // namespace kelvane::model

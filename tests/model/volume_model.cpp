// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/volume_model.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <sstream>
#include <utility>

namespace kelvane::model {
namespace {

constexpr mode_t kReadAndWriteForAll = 0666;
constexpr mode_t kUmask = 022;
constexpr int64_t kLeastFreeSpace = 4096;
constexpr int64_t kBlock = 2048;

std::string join(const std::string& directory, const std::string& name) {
  return directory == "/" ? "/" + name : directory + "/" + name;
}

std::string parentOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool isBelow(const std::string& path, const std::string& directory) {
  return path.starts_with(directory == "/" ? "/" : directory + "/");
}

std::vector<std::string> componentsOf(const std::string& path) {
  std::vector<std::string> names;
  std::istringstream stream(path);
  for (std::string name; std::getline(stream, name, '/');) {
    if (!name.empty()) names.push_back(name);
  }
  return names;
}

}  // namespace

VolumeModel::VolumeModel(Tree disc, Setting setting)
    : pristine_(std::move(disc)), setting_(std::move(setting)) {
  for (const auto& [path, entry] : pristine_) disc_[path] = std::make_shared<Entry>(entry);
}

// The rule of lookup: hidden paths are nowhere, the overlay comes first, then the disc.
VolumeModel::Found VolumeModel::lookUp(const std::string& path) const {
  if (path == "/") {
    auto root = std::make_shared<Entry>();
    root->type = 'd';
    root->mode = rootMode_;
    return {root, false};
  }
  if (isHidden(path)) return {};
  if (const auto found = overlay_.find(path); found != overlay_.end())
    return {found->second, false};
  if (const auto found = disc_.find(path); found != disc_.end()) return {found->second, true};
  return {};
}

VolumeModel::Place VolumeModel::walk(const std::string& path) const {
  const std::vector<std::string> names = componentsOf(path);
  Place place;
  place.found = lookUp("/");
  std::string current = "/";
  for (const std::string& name : names) {
    if (!place.found) return {ENOENT, true, {}};
    // Where links lead is the kernel's business.
    if (place.found.item->type == 'l') return {0, false, {}};
    if (place.found.item->type != 'd') return {ENOTDIR, true, {}};
    if (name.size() > 255) return {ENAMETOOLONG, true, {}};
    current = join(current, name);
    place.found = lookUp(current);
  }
  return place;
}

std::set<std::string> VolumeModel::namesIn(const std::string& directory) const {
  std::set<std::string> names;
  const auto collect = [&](const std::map<std::string, Item>& tree, bool canBeHidden) {
    for (const auto& [path, item] : tree) {
      if (parentOf(path) != directory || (canBeHidden && isHidden(path))) continue;
      names.insert(path.substr(path.rfind('/') + 1));
    }
  };
  collect(disc_, true);
  collect(overlay_, false);
  return names;
}

bool VolumeModel::hasSpace() const {
  return setting_.totalBytes - setting_.usedBytes - written_ >= kLeastFreeSpace;
}

void VolumeModel::makeParents(const std::string& path) {
  for (std::string above = parentOf(path); above != "/"; above = parentOf(above)) {
    if (overlay_.contains(above)) continue;
    overlay_[above] = std::make_shared<Entry>(Entry{'d', {}, 0777 & ~kUmask, {}});
  }
}

// Puts an item into the overlay, where it is seen.
void VolumeModel::place(const std::string& path, const Item& item) {
  hidden_.erase(path);
  makeParents(path);
  overlay_[path] = item;
}

// What the disc has at the path and below is another item from now on: open files stay with the
// old.
void VolumeModel::renewDiscItems(const std::string& path) {
  for (auto& [discPath, item] : disc_) {
    if (discPath == path || isBelow(discPath, path)) {
      item = std::make_shared<Entry>(pristine_.at(discPath));
    }
  }
}

int64_t VolumeModel::sizeInOverlay(const std::string& path) const {
  const Entry& entry = *overlay_.at(path);
  return entry.type == 'd' ? setting_.directorySize(path)
                           : static_cast<int64_t>(entry.content.size());
}

// The rule of removal: from the overlay, with all below; what the disc has is hidden.
void VolumeModel::remove(const std::string& path) {
  if (overlay_.contains(path)) {
    written_ -= sizeInOverlay(path);
    std::erase_if(overlay_, [&](const auto& pair) {
      return pair.first == path || isBelow(pair.first, path);
    });
  }
  if (!discHas(path)) return;
  hidden_.insert(path);
  renewDiscItems(path);
}

// A file of the disc that is cut to nothing: a new one in the overlay, for everybody who has it
// open.
VolumeModel::Item VolumeModel::emptyDiscFile(const std::string& path, const Found& found) {
  const Item item = found.item;
  item->content.clear();
  item->mode |= kReadAndWriteForAll;
  item->modified.reset();
  disc_[path] = std::make_shared<Entry>(pristine_.at(path));
  place(path, item);
  return item;
}

int VolumeModel::open(const Step& step, int flags, Item* item) {
  const Place place = walk(step.path);
  if (place.code != 0) return place.code;
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  const bool creates = (flags & O_CREAT) != 0;
  if (!place.found) {
    if (!creates) return ENOENT;
    if (!hasSpace()) return ENOSPC;
    *item = std::make_shared<Entry>(Entry{'f', {}, step.mode & ~kUmask, {}});
    this->place(step.path, *item);
    return 0;
  }
  if ((flags & O_EXCL) != 0) return EEXIST;
  if (place.found.item->type == 'l') return ELOOP;
  if (place.found.item->type == 'd') return writes || creates ? EISDIR : 0;
  *item = place.found.item;
  if (place.found.isOnDisc) {
    if ((flags & O_TRUNC) == 0) return writes ? EROFS : 0;
    if (!hasSpace()) return ENOSPC;
    *item = emptyDiscFile(step.path, place.found);
  } else if ((flags & O_TRUNC) != 0) {
    (*item)->content.clear();
    (*item)->modified.reset();
  }
  return 0;
}

Outcome VolumeModel::write(const Item& item, off_t offset, const std::string& bytes) {
  if (bytes.empty()) return {};
  if (!hasSpace()) return Outcome::failure(ENOSPC);
  const auto begin = static_cast<size_t>(offset);
  if (item->content.size() < begin + bytes.size()) item->content.resize(begin + bytes.size());
  item->content.replace(begin, bytes.size(), bytes);
  item->modified.reset();
  written_ += static_cast<int64_t>(bytes.size());
  return {};
}

Outcome VolumeModel::openAndWrite(const Step& step, int flags) {
  if (!walk(step.path).isDefined) return Outcome::undefined();
  Item item;
  if (const int code = open(step, flags, &item)) return Outcome::failure(code);
  const bool appends = (flags & O_APPEND) != 0;
  return write(item, appends ? static_cast<off_t>(item->content.size()) : step.offset,
               bytesOf(step));
}

Outcome VolumeModel::truncate(const Step& step) {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0 || !place.found) return Outcome::failure(place.code ? place.code : ENOENT);
  if (place.found.item->type == 'l') return Outcome::undefined();
  if (place.found.item->type == 'd') return Outcome::failure(EISDIR);
  const auto length = static_cast<size_t>(step.offset);
  if (place.found.isOnDisc) {
    // Whether that makes a new file is left open.
    if (place.found.item->content.size() == length) return Outcome::undefined();
    if (length != 0) return Outcome::failure(EROFS);
    if (!hasSpace()) return Outcome::failure(ENOSPC);
    emptyDiscFile(step.path, place.found);
    return {};
  }
  place.found.item->content.resize(length);
  place.found.item->modified.reset();
  return {};
}

std::string VolumeModel::shownText(const std::string& stored) const {
  return stored.size() < setting_.overlayDirectory.size()
             ? std::string()
             : stored.substr(setting_.overlayDirectory.size());
}

Outcome VolumeModel::stat(const Step& step) const {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0 || !place.found) return Outcome::failure(place.code ? place.code : ENOENT);
  const Entry& entry = *place.found.item;
  const mode_t mode = entry.mode | (place.found.isOnDisc ? kReadAndWriteForAll : 0);
  char text[64];
  if (entry.type == 'd') {
    std::snprintf(text, sizeof(text), "d %o", mode);
  } else if (entry.type == 'l') {
    std::snprintf(text, sizeof(text), "l %zu", shownText(entry.content).size());
  } else {
    std::snprintf(text, sizeof(text), "f %o %zu", mode, entry.content.size());
  }
  return {0, text, entry.type == 'f' ? entry.modified : std::nullopt, true};
}

Outcome VolumeModel::list(const Step& step) const {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0 || !place.found) return Outcome::failure(place.code ? place.code : ENOENT);
  if (place.found.item->type != 'd') return Outcome::failure(ENOTDIR);
  std::string names;
  for (const std::string& name : namesIn(step.path)) names += readable(name) + "|";
  return {0, names, {}, true};
}

Outcome VolumeModel::readLink(const Step& step) const {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0 || !place.found) return Outcome::failure(place.code ? place.code : ENOENT);
  if (place.found.item->type != 'l') return Outcome::failure(EINVAL);
  return {0, "\"" + readable(shownText(place.found.item->content)) + "\"", {}, true};
}

Outcome VolumeModel::statFs() const {
  const int64_t left = setting_.totalBytes - setting_.usedBytes - written_;
  const int64_t blocks = setting_.totalBytes / kBlock;
  // More than everything can be free, as the rules count; no number of blocks is promised then.
  if (left > setting_.totalBytes) return Outcome::undefined();
  return {0,
          std::to_string(blocks) + " " + std::to_string(std::max<int64_t>(left, 0) / kBlock),
          {},
          true};
}

Outcome VolumeModel::makeDirectory(const Step& step) {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0) return Outcome::failure(place.code);
  if (place.found) return Outcome::failure(EEXIST);
  this->place(step.path, std::make_shared<Entry>(Entry{'d', {}, step.mode & ~kUmask, {}}));
  return {};
}

Outcome VolumeModel::removeItem(const Step& step) {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0 || !place.found) return Outcome::failure(place.code ? place.code : ENOENT);
  const bool isDirectory = place.found.item->type == 'd';
  if (step.kind == StepKind::Unlink && isDirectory) return Outcome::failure(EISDIR);
  if (step.kind == StepKind::RemoveDirectory) {
    if (!isDirectory) return Outcome::failure(ENOTDIR);
    if (!namesIn(step.path).empty()) return Outcome::failure(ENOTEMPTY);
  }
  remove(step.path);
  return {};
}

Outcome VolumeModel::makeLink(const Step& step) {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0) return Outcome::failure(place.code);
  if (place.found) return Outcome::failure(EEXIST);
  this->place(step.path, std::make_shared<Entry>(
                             Entry{'l', setting_.overlayDirectory + step.other, 0777, {}}));
  return {};
}

Outcome VolumeModel::changeMode(const Step& step) {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0 || !place.found) return Outcome::failure(place.code ? place.code : ENOENT);
  if (step.path == "/") {
    rootMode_ = step.mode;
    return {};
  }
  if (place.found.item->type == 'l') return Outcome::undefined();
  if (!place.found.isOnDisc) {
    place.found.item->mode = step.mode;
    return {};
  }
  if ((place.found.item->mode | kReadAndWriteForAll) == step.mode) return {};
  if (place.found.item->type != 'd') return Outcome::failure(EROFS);
  makeParents(step.path);
  overlay_[step.path] = std::make_shared<Entry>(Entry{'d', {}, step.mode, {}});
  return {};
}

Outcome VolumeModel::setTime(const Step& step) {
  const Place place = walk(step.path);
  if (!place.isDefined) return Outcome::undefined();
  if (place.code != 0 || !place.found) return Outcome::failure(place.code ? place.code : ENOENT);
  if (place.found.item->type != 'f') return Outcome::undefined();
  if (place.found.isOnDisc) return Outcome::failure(EROFS);
  place.found.item->modified = step.seed;
  return {};
}

Outcome VolumeModel::useHandle(const Step& step) {
  Item& handle = handles_.at(step.handle);
  if (step.kind == StepKind::HandleOpen) {
    if (handle != nullptr) return Outcome::undefined();
    const Place place = walk(step.path);
    if (!place.isDefined || (place.found && place.found.item->type == 'd')) {
      return Outcome::undefined();
    }
    canWrite_.at(step.handle) = step.isForWriting;
    const int code = open(step, step.isForWriting ? O_RDWR : O_RDONLY, &handle);
    if (code != 0) handle.reset();
    return {code, {}, {}, true};
  }
  if (handle == nullptr) return Outcome::undefined();
  if (step.kind == StepKind::HandleClose) {
    handle.reset();
    return {};
  }
  if (step.kind == StepKind::HandleRead) return {0, summaryOf(handle->content), {}, true};
  return canWrite_.at(step.handle) ? write(handle, step.offset, bytesOf(step))
                                   : Outcome::failure(EBADF);
}

Outcome VolumeModel::apply(const Step& step) {
  switch (step.kind) {
    case StepKind::Create:
      return openAndWrite(step, O_WRONLY | O_CREAT | O_EXCL);
    case StepKind::Replace:
      return openAndWrite(step, O_WRONLY | O_CREAT | O_TRUNC);
    case StepKind::WriteAt:
      return openAndWrite(step, O_WRONLY);
    case StepKind::Append:
      return openAndWrite(step, O_WRONLY | O_APPEND | O_CREAT);
    case StepKind::Truncate:
      return truncate(step);
    case StepKind::Read: {
      const Place place = walk(step.path);
      if (!place.isDefined) return Outcome::undefined();
      if (place.found && place.found.item->type == 'd') return Outcome::failure(EISDIR);
      Item item;
      const int code = open(step, O_RDONLY, &item);
      return code != 0 ? Outcome::failure(code) : Outcome{0, summaryOf(item->content), {}, true};
    }
    case StepKind::Stat:
      return stat(step);
    case StepKind::ReadLink:
      return readLink(step);
    case StepKind::List:
      return list(step);
    case StepKind::StatFs:
      return statFs();
    case StepKind::MakeDirectory:
      return makeDirectory(step);
    case StepKind::RemoveDirectory:
    case StepKind::Unlink:
      return removeItem(step);
    case StepKind::Rename:
    case StepKind::RenameNoReplace:
      return rename(step);
    case StepKind::SymLink:
      return makeLink(step);
    case StepKind::ChangeMode:
      return changeMode(step);
    case StepKind::SetTime:
      return setTime(step);
    case StepKind::HandleOpen:
    case StepKind::HandleWrite:
    case StepKind::HandleRead:
    case StepKind::HandleClose:
      return useHandle(step);
    case StepKind::Reopen:
      return {};
  }
  return Outcome::undefined();
}

void VolumeModel::addVisible(const std::string& directory, Tree* tree) const {
  for (const std::string& name : namesIn(directory)) {
    const std::string path = join(directory, name);
    const Found found = lookUp(path);
    if (!found) continue;
    Entry entry = *found.item;
    if (found.isOnDisc) entry.mode |= kReadAndWriteForAll;
    const bool isDirectory = entry.type == 'd';
    tree->emplace(path, std::move(entry));
    if (isDirectory) addVisible(path, tree);
  }
}

Tree VolumeModel::visibleTree() const {
  Tree tree;
  addVisible("/", &tree);
  for (auto& [path, entry] : tree) {
    if (entry.type == 'l') entry.content = shownText(entry.content);
  }
  return tree;
}

std::vector<std::string> VolumeModel::visiblePaths() const {
  Tree tree;
  addVisible("/", &tree);
  std::vector<std::string> paths;
  for (const auto& [path, entry] : tree) paths.push_back(path);
  return paths;
}

}  // namespace kelvane::model

// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/change_count.h"

#include <sys/stat.h>

#include <unordered_set>

#include "platform/foundation/folder_items.h"

namespace kelvane {
namespace {

constexpr uint64_t kBlockBytes = 2048;

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

void addOne(ItemCount& count, const struct stat& status) {
  ++(S_ISDIR(status.st_mode) ? count.folders : count.files);
}

class Count {
 public:
  Count(const std::string& overlay, const std::optional<std::string>& disc,
        const OverlayChanges& changes, AppleDouble appleDouble, const std::stop_token& stop)
      : overlay_(overlay),
        disc_(disc),
        moved_(changes.moved),
        deleted_(changes.deleted.begin(), changes.deleted.end()),
        appleDouble_(appleDouble),
        stop_(stop) {}

  std::optional<ChangeCount> result() {
    walk(overlay_, "", [this](const std::string& path, const struct stat& status) {
      return countOverlayItem(path, status);
    });
    if (disc_) {
      for (const std::string& path : deleted_) countDeleted(path);
    }
    if (stop_.stop_requested()) return std::nullopt;
    return count_;
  }

 private:
  /// Visits what is in the folder `top` of a tree; `visit` says whether to go into an item.
  template <typename Visitor>
  void walk(const std::string& root, const std::string& top, Visitor visit) {
    visitItemsBelow(root + top, stop_, [&](const FolderItem& item) {
      const std::string path = top + item.path;
      const auto status = statusOf(root + path);
      return status && visit(path, *status) ? Visit::GoOn : Visit::PassOver;
    });
  }

  std::optional<struct stat> onDisc(const std::string& path) const {
    return disc_ ? statusOf(*disc_ + path) : std::nullopt;
  }

  bool isBelowDeleted(const std::string& path) const {
    for (size_t end = path.rfind('/'); end != 0 && end != std::string::npos;
         end = path.rfind('/', end - 1)) {
      if (deleted_.contains(path.substr(0, end))) return true;
    }
    return false;
  }

  bool countOverlayItem(const std::string& path, const struct stat& status) {
    // What stands at a deleted path is there to be hidden.
    if (deleted_.contains(path)) return false;
    if (appleDouble_ == AppleDouble::LeftOut && path.compare(path.rfind('/') + 1, 2, "._") == 0) {
      return false;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    if (isFolder) ++count_.folders;
    if (S_ISREG(status.st_mode)) {
      const auto size = static_cast<uint64_t>(status.st_size);
      count_.newBytes += size;
      count_.contentBlocks += (size + kBlockBytes - 1) / kBlockBytes;
    }
    if (const auto old = onDisc(path)) {
      // A folder of the disc that something was put into has not changed itself.
      if (!isFolder || !S_ISDIR(old->st_mode)) addOne(count_.replaced, status);
    } else if (isRenamed(path)) {
      addOne(count_.renamed, status);
    } else {
      addOne(count_.added, status);
    }
    return true;
  }

  bool isRenamed(const std::string& path) {
    const std::optional<std::string> origin = moved_.originOf(path);
    if (!origin || !onDisc(*origin)) return false;
    if (!deleted_.contains(*origin) && !isBelowDeleted(*origin)) return false;
    return foundAgain_.insert(*origin).second;
  }

  void countDeleted(const std::string& path) {
    if (stop_.stop_requested() || isBelowDeleted(path)) return;
    const auto status = onDisc(path);
    if (!status) return;
    countGone(path, *status);
    if (!S_ISDIR(status->st_mode)) return;
    walk(*disc_, path, [this](const std::string& inside, const struct stat& found) {
      countGone(inside, found);
      return true;
    });
  }

  void countGone(const std::string& path, const struct stat& status) {
    if (!foundAgain_.contains(path)) addOne(count_.deleted, status);
  }

  const std::string& overlay_;
  const std::optional<std::string>& disc_;
  const MovedItems& moved_;
  const std::unordered_set<std::string> deleted_;
  const AppleDouble appleDouble_;
  const std::stop_token& stop_;
  std::unordered_set<std::string> foundAgain_;  // Disc paths of renamed items.
  ChangeCount count_;
};

}  // namespace

std::optional<ChangeCount> countChanges(const std::string& overlay,
                                        const std::optional<std::string>& disc,
                                        const OverlayChanges& changes, AppleDouble appleDouble,
                                        const std::stop_token& stop) {
  return Count(overlay, disc, changes, appleDouble, stop).result();
}

}  // namespace kelvane

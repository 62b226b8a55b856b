// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/step.h"

namespace kelvane::model {

/// An item of a tree.
struct Entry {
  char type = 'f';      ///< f, d or l
  std::string content;  ///< Of a link: its text, as it is stored.
  mode_t mode = 0;
  std::optional<int64_t> modified;
};
/// Paths such as "/a/b"; the root is not in it.
using Tree = std::map<std::string, Entry>;

/// The rules of the writable volume in memory, written from what the volume promises and knowing
/// nothing of how it is made.
///
/// A disc's tree, which never changes; an overlay, which shadows it path by path; and the paths
/// that are hidden. An item of a file system is a shared object here, since open files follow it.
class VolumeModel {
 public:
  struct Setting {
    std::string overlayDirectory;  ///< Links are stored with it in front.
    int64_t totalBytes = 0;
    int64_t usedBytes = 0;
    /// The size that the file system beneath gives to a directory of the overlay.
    std::function<int64_t(const std::string& path)> directorySize;
  };

  VolumeModel(Tree disc, Setting setting);

  /// Takes the step and says how it has to end.
  Outcome apply(const Step& step);

  /// Everything that the volume shows, links with the text that is read.
  Tree visibleTree() const;
  /// What the disc must hold after the burn, links with the text that is stored.
  Tree sessionTree() const;
  /// The lines of the hide-list file, sorted.
  std::multiset<std::string> hidePatterns() const;
  /// Whether mkisofs can continue the disc with this overlay: it takes what stands on the disc at
  /// the path of a new directory for a directory, and fails where a pattern hides a directory above
  /// one that only the disc has (see docs/limits.md).
  bool canBeBurned() const;

  std::vector<std::string> visiblePaths() const;

 private:
  using Item = std::shared_ptr<Entry>;
  struct Found {
    Item item;  ///< Null where there is none.
    bool isOnDisc = false;
    explicit operator bool() const { return item != nullptr; }
  };
  struct Place {
    int code = 0;  ///< Of the way there; 0 also where only the last name is missing.
    bool isDefined = true;
    Found found;
  };

  Found lookUp(const std::string& path) const;
  Place walk(const std::string& path) const;
  std::set<std::string> namesIn(const std::string& directory) const;
  bool discHas(const std::string& path) const { return disc_.contains(path); }
  bool isHidden(const std::string& path) const { return hidden_.contains(path); }
  bool hasSpace() const;

  void makeParents(const std::string& path);
  void place(const std::string& path, const Item& item);
  void renewDiscItems(const std::string& path);
  void remove(const std::string& path);
  int64_t sizeInOverlay(const std::string& path) const;
  Item emptyDiscFile(const std::string& path, const Found& found);
  int open(const Step& step, int flags, Item* item);
  Outcome write(const Item& item, off_t offset, const std::string& bytes);
  Outcome openAndWrite(const Step& step, int flags);
  Outcome truncate(const Step& step);
  Outcome stat(const Step& step) const;
  Outcome list(const Step& step) const;
  Outcome readLink(const Step& step) const;
  Outcome statFs() const;
  Outcome makeDirectory(const Step& step);
  Outcome removeItem(const Step& step);
  Outcome makeLink(const Step& step);
  Outcome changeMode(const Step& step);
  Outcome setTime(const Step& step);
  Outcome useHandle(const Step& step);

  Outcome rename(const Step& step);
  int checkRename(const Step& step, const Found& source, const Found& target) const;
  void moveOverlayItem(const std::string& from, const std::string& to);
  void copyUp(const std::string& from, const std::string& to);
  void moveLink(const std::string& from, const std::string& to, const Found& source);
  bool leadsSomewhereOnDisc(const std::string& link) const;
  bool leadsSomewhereInOverlay(const std::string& path, int depth) const;

  std::string shownText(const std::string& stored) const;
  void addVisible(const std::string& directory, Tree* tree) const;
  bool isMatched(const std::string& path) const;
  bool holdsPlaceholder(const std::string& directory) const;
  bool losesItsParent(const std::string& discDirectory) const;

  Tree pristine_;
  Setting setting_;
  std::map<std::string, Item> disc_;  // The disc's items; one that has become another's is renewed.
  std::map<std::string, Item> overlay_;  // Without the root.
  std::multiset<std::string> hidden_;
  int64_t written_ = 0;
  mode_t rootMode_ = 0700;
  std::array<Item, kHandleCount> handles_;
  std::array<bool, kHandleCount> canWrite_ = {};
};

}  // namespace kelvane::model

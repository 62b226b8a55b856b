// SPDX-License-Identifier: GPL-2.0-or-later
// Renaming. The delegate's move has its own rules; whatever a program sees replaced is never lost
// before the new item stands in its place.
#include <cerrno>
#include <cstdio>

#include "platform/foundation/placeholders.h"
#include "platform/userfs/volume.h"

namespace kelvane::userfs {
void Volume::rename(fuse_req_t request, fuse_ino_t parent, const char* name, fuse_ino_t newParent,
                    const char* newName, unsigned flags) {
  Move move{nodes_.nodeOf(parent), name, nodes_.nodeOf(newParent), newName, {}, {}, {}, {}};
  int code = (flags & ~static_cast<unsigned>(RENAME_NOREPLACE)) != 0 ? EINVAL : 0;
  if (code == 0) code = checkName(move.parent, name);
  if (code == 0) code = checkName(move.newParent, newName);
  if (code == 0) {
    move.from = nodes_.pathOf(move.parent, name);
    move.to = nodes_.pathOf(move.newParent, newName);
    code = checkMove(move, flags);
  }
  if (code == 0 && move.from != move.to) code = carryOut(move);
  fuse_reply_err(request, code);
}

// What rename(2) refuses. Fills in what stands at either path.
int Volume::checkMove(Move& move, unsigned flags) {
  const auto source = itemAt(move.from);
  if (!source.has_value()) return numberOf({}, ENOENT);
  move.source = *source;
  move.target = itemAtUnlessKnownMissing(move.to);
  if (move.to.starts_with(move.from + "/")) return EINVAL;
  if (!move.target.has_value()) return 0;
  if ((flags & RENAME_NOREPLACE) != 0) return EEXIST;
  if (move.from == move.to) return 0;
  if (move.from.starts_with(move.to + "/")) return ENOTEMPTY;
  if (!move.target->isDirectory()) return move.source.isDirectory() ? ENOTDIR : 0;
  if (!move.source.isDirectory()) return EISDIR;
  return checkEmpty(move.to);
}

int Volume::carryOut(const Move& move) {
  // What the directory shows now, since a copy from beneath brings hidden items along.
  const bool copiesTree = move.source.isDirectory() && move.source.isReadOnly() && mayHideItems_;
  std::unordered_set<std::string> visible;
  if (copiesTree) visible = itemsBelow(move.from);

  OpenFile* const keeper = keepReplaced(move);
  int code = isMisjudgedLink(move) ? EIO : moveOver(move);
  // The delegate finds a link only if it leads somewhere, and most of its links do not.
  if (code != 0 && move.source.isLink()) code = makeLinkAnew(move);
  if (code != 0) {
    if (keeper != nullptr) closeOpenFile(keeper);
    return code;
  }
  if (move.source.isDirectory() && mayHideItems_) {
    settleMovedTree(move.to, "", copiesTree ? &visible : nullptr);
  }
  if (move.source.isReadOnly()) {
    itemWasHidden();
    contentMayHaveMoved();
  }
  settleNodes(move);
  // At once: the copy may lose its name before the files that are open on it are used again.
  if (move.source.isReadOnly()) {
    for (OpenFile* file : openFiles_) refresh(file);
  }
  return 0;
}

// Whether the delegate would move another item. It looks for the source in the writable tree by
// following links: where that leads nowhere, it takes what stands beneath at the same path.
bool Volume::isMisjudgedLink(const Move& move) {
  constexpr int kMostLinks = 40;
  if (!move.source.isLink() || move.source.isReadOnly() || move.to.starts_with(kTrash))
    return false;
  std::string path = move.from;
  for (int links = 0; links < kMostLinks; ++links) {
    const auto text = delegate_->destinationOfSymbolicLinkAtPath(path, nullptr);
    // An empty text is either the root's or what is left of one that is too short to be read.
    if (!text.has_value() || !text->starts_with('/')) return true;
    const auto item = itemAt(*text);
    if (!item.has_value() || item->isReadOnly()) return true;
    if (!item->isLink()) return false;
    path = *text;
  }
  return true;
}

int Volume::moveAt(const std::string& from, const std::string& to) {
  itemsMayAppear();
  PosixError error;
  const bool moved = delegate_->moveItemAtPath(from, to, &error);
  return moved && !error.isSet() ? 0 : numberOf(error, EIO);
}

int Volume::moveOver(const Move& move) {
  const bool copiesOntoWritable =
      move.source.isReadOnly() && move.target.has_value() && !move.target->isReadOnly();
  if (!copiesOntoWritable) return moveAt(move.from, move.to);
  // The copy of a link would stay beside: the delegate finds it only if it leads somewhere in the
  // writable tree. The caller makes it anew.
  if (move.source.isLink()) return EIO;
  // The delegate does not copy onto a writable item, but moves one writable item over another.
  const std::string beside = temporaryPathBeside(move.to);
  if (const int code = moveAt(move.from, beside)) return code;
  const int code = moveAt(beside, move.to);
  if (code != 0) moveAt(beside, move.from);
  return code;
}

// Moves a link by making another one like it.
int Volume::makeLinkAnew(const Move& move) {
  const auto text = delegate_->destinationOfSymbolicLinkAtPath(move.from, nullptr);
  if (!text.has_value()) return EIO;
  std::string aside;
  std::string asideText;
  if (const int code = setLinkTargetAside(move, &aside, &asideText)) return code;
  if (const int code = createVisibleLink(move.to, *text)) {
    putLinkTargetBack(move, aside, asideText);
    return code;
  }
  AttributeChanges times;
  times.NSFileAccessDate = move.source.status.st_atim;
  times.NSFileModificationDate = move.source.status.st_mtim;
  applyAttributes(move.to, times);
  if (!aside.empty()) removeAt(aside);
  return removeAt(move.from);
}

// Frees the path for a link. What is only readable there is shadowed by it; a writable item is kept
// under another name until the link stands, a link's text in `asideText`.
int Volume::setLinkTargetAside(const Move& move, std::string* aside, std::string* asideText) {
  if (!move.target.has_value() || move.target->isReadOnly()) return 0;
  if (move.target->isLink()) {
    *asideText =
        delegate_->destinationOfSymbolicLinkAtPath(move.to, nullptr).value_or(std::string());
    return removeAt(move.to);
  }
  *aside = temporaryPathBeside(move.to);
  return moveAt(move.to, *aside);
}

void Volume::putLinkTargetBack(const Move& move, const std::string& aside,
                               const std::string& asideText) {
  if (!aside.empty()) {
    moveAt(aside, move.to);
  } else if (move.target.has_value() && !move.target->isReadOnly()) {
    createVisibleLink(move.to, asideText);
  }
}

// A name in the same directory that nothing has. Requests come one by one, so no program sees it.
std::string Volume::temporaryPathBeside(const std::string& path) {
  const std::string directory = path.substr(0, path.rfind('/') + 1);
  while (true) {
    std::string beside = directory + format(".kelvanefs-moving-%i", ++lastTemporaryName_);
    if (!itemAt(beside).has_value()) return beside;
  }
}

}  // namespace kelvane::userfs

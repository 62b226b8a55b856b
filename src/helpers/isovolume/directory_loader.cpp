// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/directory_loader.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>

#include "helpers/isovolume/iso_date.h"
#include "helpers/isovolume/iso_fields.h"
#include "helpers/isovolume/iso_names.h"

namespace kelvane::isovolume {
namespace {

/// Sectors asked of the source at once.
constexpr std::uint64_t kSectorsAtOnce = 32;
/// So many sectors without a record, one after the other, end a directory. Twice an
/// error-correction block of a DVD, so that one block that cannot be read costs only its own
/// entries.
constexpr unsigned kMostEmptySectors = 32;

/// What the kernel shows where a disc records no permissions: a disc shared with other systems does
/// not tell programs from other files.
constexpr std::uint16_t kDefaultPermissions = 0555;
constexpr std::uint16_t kPermissionBits = 07777;

}  // namespace

DirectoryLoader::DirectoryLoader(BlockSource& source, NodeTable& nodes)
    : source_(source),
      nodes_(nodes),
      rockRidgeReader_(source),
      sectorsLeft_(source.sizeInBlocks()),
      sectors_(kSectorsAtOnce * kBlockSize),
      selfSector_(kBlockSize) {}

std::optional<std::uint8_t> DirectoryLoader::detectRockRidge(std::uint64_t extent) {
  DirectoryRecord self;
  if (!readSelf(extent, &self)) return std::nullopt;
  // The declaration comes first, or behind the 14 bytes of CD-ROM XA.
  for (const std::uint8_t offset : {std::uint8_t{0}, std::uint8_t{14}}) {
    rockRidgeReader_.setSkip(offset);
    rockRidgeReader_.read(self.systemUse, &rockRidge_);
    if (!rockRidge_.sharingProtocol) continue;
    rockRidgeReader_.setSkip(rockRidge_.skip);
    // A damaged continuation may have swallowed the extension's name; attributes betray it as well.
    if (rockRidge_.extension || rockRidge_.posix) return rockRidge_.skip;
  }
  rockRidgeReader_.setSkip(0);
  return std::nullopt;
}

Node DirectoryLoader::rootNode(std::uint64_t extent, std::uint32_t length) {
  Node root;
  root.mode = S_IFDIR | kDefaultPermissions;
  DirectoryRecord self;
  if (readSelf(extent, &self)) {
    fillFromRecord(self, &root);
    if (naming_ == Naming::rockRidge) {
      // Here the area begins with the declaration itself, which is not skipped.
      rockRidgeReader_.read(self.systemUse, &rockRidge_);
      fillFromRockRidge(&root);
    }
  }
  root.mode = static_cast<std::uint16_t>(S_IFDIR | (root.mode & kPermissionBits));
  root.firstBlock = extent;
  root.size = length;
  return root;
}

DirectoryLoader::Result DirectoryLoader::load(NodeId directory) {
  State state;
  state.directory = directory;
  state.childDepth = nodes_[directory].depth + 1u;
  state.result.first = nodes_.size();

  const std::uint64_t extent = nodes_[directory].firstBlock;
  const std::uint64_t available = source_.sizeInBlocks();
  const std::uint64_t beyond = extent < available ? available - extent : 0;
  const std::uint64_t count = std::min({blocksFor(nodes_[directory].size), beyond, sectorsLeft_});
  unsigned emptySectors = 0;
  std::uint64_t singly = 0;  // sectors to be read one by one, to find out which of them is bad
  bool another = false;
  for (std::uint64_t done = 0;
       done < count && !another && emptySectors < kMostEmptySectors && !nodes_.isFull();) {
    const std::uint64_t atOnce = singly > 0 ? 1 : std::min(kSectorsAtOnce, count - done);
    const auto bytes = std::span(sectors_).first(atOnce * kBlockSize);
    const bool readable = source_.readBlocks(extent + done, bytes);
    if (!readable && atOnce > 1) {
      singly = atOnce;
      continue;
    }
    for (std::uint64_t sector = 0; sector < atOnce && !another && !nodes_.isFull(); ++sector) {
      const Bytes content = Bytes(bytes).subspan(sector * kBlockSize, kBlockSize);
      const bool found = readable && loadSector(content, done + sector == 0, &state, &another) > 0;
      emptySectors = found ? 0 : emptySectors + 1;
    }
    state.result.anyRead = state.result.anyRead || readable;
    done += atOnce;
    sectorsLeft_ -= atOnce;
    singly -= std::min<std::uint64_t>(singly, 1);
  }
  if (state.continuedFile) nodes_[*state.continuedFile].unreadable = true;  // its end is missing
  state.result.count = nodes_.size() - state.result.first;
  return state.result;
}

std::size_t DirectoryLoader::loadSector(Bytes sector, bool first, State* state, bool* another) {
  std::size_t records = 0;
  DirectoryRecord record;
  std::size_t length = 0;
  while (decodeDirectoryRecord(sector, &record, &length) == Decoding::record) {
    sector = sector.subspan(length);
    // "." opens a directory: met later on, it is the next directory's.
    if (record.isSelf() && !first && records == 0) {
      *another = true;
      return 0;
    }
    ++records;
    if (!record.isSelf() && !record.isParent()) loadRecord(record, state);
  }
  return records;
}

void DirectoryLoader::loadRecord(const DirectoryRecord& record, State* state) {
  // Associated files are the other forks of files of the same name.
  if (record.isAssociated() || takeFurtherSection(record, state)) return;
  if (naming_ == Naming::rockRidge) {
    rockRidgeReader_.read(record.systemUse, &rockRidge_);
    if (rockRidge_.relocated) {
      ++state->result.relocated;
      return;
    }
  }
  if (!nameOf(record, &name_) || state->childDepth > kDeepestLevel) return;

  Node node;
  fillFromRecord(record, &node);
  if (naming_ == Naming::rockRidge) fillFromRockRidge(&node);
  node.name = nodes_.storeText(name_);
  node.nameLength = static_cast<std::uint8_t>(name_.size());
  node.parent = state->directory;
  node.depth = static_cast<std::uint16_t>(state->childDepth);
  const NodeId id = nodes_.append(node);
  if (record.isContinued() && S_ISREG(node.mode)) {
    state->continuedFile = id;
    state->continuedIdentifier.assign(record.identifier.begin(), record.identifier.end());
  }
}

/// A file too large for one record has several in a row with the same identifier; all but the last
/// say that another follows. (ECMA-119, 6.5.1)
bool DirectoryLoader::takeFurtherSection(const DirectoryRecord& record, State* state) {
  if (!state->continuedFile) return false;
  Node& file = nodes_[*state->continuedFile];
  if (!std::ranges::equal(record.identifier, state->continuedIdentifier)) {
    file.unreadable = true;  // its end is missing
    state->continuedFile.reset();
    return false;
  }
  nodes_.addSection(&file, {.firstBlock = record.extent, .length = record.dataLength});
  if (record.interleaved) file.unreadable = true;
  if (!record.isContinued()) state->continuedFile.reset();
  return true;
}

bool DirectoryLoader::nameOf(const DirectoryRecord& record, std::string* name) const {
  if (naming_ == Naming::joliet) {
    jolietName(record.identifier, name);
  } else if (naming_ == Naming::rockRidge && !rockRidge_.name.empty()) {
    *name = rockRidge_.name;
  } else {
    plainName(record.identifier, name);
  }
  limitName(name);
  return isPermittedName(*name);
}

void DirectoryLoader::fillFromRecord(const DirectoryRecord& record, Node* node) const {
  node->mode =
      static_cast<std::uint16_t>((record.isDirectory() ? S_IFDIR : S_IFREG) | kDefaultPermissions);
  node->firstBlock = record.extent;
  node->size = record.dataLength;
  node->unreadable = record.interleaved;
  node->modified = node->accessed = node->changed = secondsOfShortDate(record.date);
}

void DirectoryLoader::fillFromRockRidge(Node* node) {
  if (rockRidge_.posix) {
    node->links = rockRidge_.posix->links;
    node->user = rockRidge_.posix->user;
    node->group = rockRidge_.posix->group;
    fillType(node);
  }
  node->modified = rockRidge_.modified.value_or(node->modified);
  node->accessed = rockRidge_.accessed.value_or(node->accessed);
  node->changed = rockRidge_.changed.value_or(node->changed);
  // The parent link of a relocated directory (PL) is not needed: the tree itself knows the parent.
  if (rockRidge_.child) followChildLink(*rockRidge_.child, node);
}

/// Takes mode and type over, except that ISO-9660's own word on what is a directory stands.
void DirectoryLoader::fillType(Node* node) {
  const std::uint32_t mode = rockRidge_.posix->mode;
  const auto permissions = static_cast<std::uint16_t>(mode & kPermissionBits);
  mode_t type = mode & S_IFMT;
  if (S_ISDIR(node->mode)) {
    type = S_IFDIR;
  } else if (type != S_IFLNK && type != S_IFCHR && type != S_IFBLK && type != S_IFIFO &&
             type != S_IFSOCK) {
    type = S_IFREG;
  }
  node->mode = static_cast<std::uint16_t>(type | permissions);
  if (type == S_IFLNK) {
    node->unreadable = rockRidge_.target.empty() || rockRidge_.damagedTarget;
    node->size = node->unreadable ? 0 : rockRidge_.target.size();
    node->target = nodes_.storeText(node->unreadable ? std::string_view() : rockRidge_.target);
  } else if (type != S_IFREG && type != S_IFDIR) {
    node->size = 0;
  }
  if ((type == S_IFCHR || type == S_IFBLK) && rockRidge_.device) {
    // Writers that know only 32 bits of a device number leave the high field empty.
    const auto [high, low] = *rockRidge_.device;
    const dev_t device =
        high == 0 && (low & ~0xFFu) != 0 ? makedev(low >> 8, low & 0xFF) : makedev(high, low);
    node->device = static_cast<std::uint32_t>(device);
  }
}

void DirectoryLoader::followChildLink(std::uint64_t extent, Node* node) {
  Node directory;
  directory.mode = S_IFDIR | kDefaultPermissions;
  directory.modified = node->modified;
  directory.accessed = node->accessed;
  directory.changed = node->changed;
  DirectoryRecord self;
  if (readSelf(extent, &self)) {
    fillFromRecord(self, &directory);
    rockRidgeReader_.read(self.systemUse, &rockRidge_);
    rockRidge_.child.reset();  // a directory is not elsewhere than where a link has led
    fillFromRockRidge(&directory);
    directory.mode = static_cast<std::uint16_t>(S_IFDIR | (directory.mode & kPermissionBits));
  } else {
    directory.unreadable = true;
  }
  directory.firstBlock = extent;
  *node = directory;
}

bool DirectoryLoader::readSelf(std::uint64_t extent, DirectoryRecord* self) {
  std::size_t length = 0;
  if (extent >= source_.sizeInBlocks() || !source_.readBlocks(extent, selfSector_)) return false;
  return decodeDirectoryRecord(selfSector_, self, &length) == Decoding::record && self->isSelf();
}

}  // namespace kelvane::isovolume

// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isomount/iso_file_system.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

namespace kelvane::isomount {
namespace {

using isovolume::kBlockSize;
using isovolume::NodeId;
using isovolume::Status;

/// For how long, in seconds, the kernel may use an answer: a session on a disc does not change.
constexpr double kForGood = 365.0 * 24 * 3600;
constexpr std::size_t kLongestName = 255;

}  // namespace

IsoFileSystem::IsoFileSystem(isovolume::FileBlockSource& source, isovolume::IsoVolume& volume,
                             isovolume::SessionStart start, std::function<void()> whenAnswering)
    : source_(source), volume_(volume), start_(start), whenAnswering_(std::move(whenAnswering)) {}

const fuse_lowlevel_ops& IsoFileSystem::operations() {
  static const fuse_lowlevel_ops operations = [] {
    fuse_lowlevel_ops ops = {};
    ops.init = &IsoFileSystem::init;
    ops.lookup = &IsoFileSystem::lookup;
    ops.getattr = &IsoFileSystem::getattr;
    ops.readlink = &IsoFileSystem::readlink;
    ops.open = &IsoFileSystem::open;
    ops.opendir = &IsoFileSystem::opendir;
    ops.read = &IsoFileSystem::read;
    ops.readdir = &IsoFileSystem::readdir;
    ops.readdirplus = &IsoFileSystem::readdirplus;
    ops.statfs = &IsoFileSystem::statfs;
    return ops;
  }();
  return operations;
}

IsoFileSystem& IsoFileSystem::of(fuse_req_t request) {
  return *static_cast<IsoFileSystem*>(fuse_req_userdata(request));
}

void IsoFileSystem::init(void* self, fuse_conn_info* connection) {
  auto& fileSystem = *static_cast<IsoFileSystem*>(self);
  const unsigned wanted = FUSE_CAP_SPLICE_WRITE | FUSE_CAP_SPLICE_MOVE | FUSE_CAP_CACHE_SYMLINKS |
                          FUSE_CAP_READDIRPLUS | FUSE_CAP_PARALLEL_DIROPS | FUSE_CAP_ASYNC_READ;
  // Every listing carries the attributes: looking at 100,000 listed files then takes a third of the
  // time. The kernel's own choice (READDIRPLUS_AUTO) sends one request a file. Nor need it look
  // whether files have changed.
  const unsigned unwanted =
      FUSE_CAP_READDIRPLUS_AUTO | FUSE_CAP_AUTO_INVAL_DATA | FUSE_CAP_SPLICE_READ;
  connection->want = (connection->want & ~unwanted) | (wanted & connection->capable);
  fileSystem.openMayBeSkipped_ = (connection->capable & FUSE_CAP_NO_OPEN_SUPPORT) != 0;
  fileSystem.opendirMayBeSkipped_ = (connection->capable & FUSE_CAP_NO_OPENDIR_SUPPORT) != 0;
  fileSystem.whenAnswering_();
}

bool IsoFileSystem::nodeOf(fuse_req_t request, fuse_ino_t ino, NodeId* node) const {
  if (ino >= FUSE_ROOT_ID && ino - FUSE_ROOT_ID <= UINT32_MAX) {
    *node = static_cast<NodeId>(ino - FUSE_ROOT_ID);
    if (volume_.contains(*node)) return true;
  }
  fuse_reply_err(request, ENOENT);
  return false;
}

struct stat IsoFileSystem::statusOf(NodeId node) const {
  const isovolume::Attributes attributes = volume_.attributes(node);
  struct stat status = {};
  status.st_ino = ino_t{node} + FUSE_ROOT_ID;
  status.st_mode = attributes.mode;
  status.st_nlink = attributes.links;
  status.st_uid = attributes.user;
  status.st_gid = attributes.group;
  status.st_rdev = attributes.device;
  status.st_size = static_cast<off_t>(attributes.size);
  status.st_blksize = kBlockSize;
  status.st_blocks = static_cast<blkcnt_t>((attributes.size + 511) / 512);
  status.st_mtim.tv_sec = attributes.modified;
  status.st_atim.tv_sec = attributes.accessed;
  status.st_ctim.tv_sec = attributes.changed;
  return status;
}

fuse_entry_param IsoFileSystem::entryOf(NodeId node) const {
  fuse_entry_param entry = {};
  entry.ino = fuse_ino_t{node} + FUSE_ROOT_ID;
  entry.attr = statusOf(node);
  entry.attr_timeout = kForGood;
  entry.entry_timeout = kForGood;
  return entry;
}

void IsoFileSystem::lookup(fuse_req_t request, fuse_ino_t parent, const char* name) {
  IsoFileSystem& self = of(request);
  NodeId directory = 0;
  NodeId child = 0;
  if (!self.nodeOf(request, parent, &directory)) return;
  const Status status = self.volume_.lookup(directory, name, &child);
  fuse_entry_param entry = {};
  if (status == Status::ok) {
    entry = self.entryOf(child);
  } else if (status == Status::notFound) {
    entry.entry_timeout = kForGood;  // node 0: that there is nothing may be remembered
  } else {
    fuse_reply_err(request, errorNumber(status));
    return;
  }
  fuse_reply_entry(request, &entry);
}

void IsoFileSystem::getattr(fuse_req_t request, fuse_ino_t ino, fuse_file_info*) {
  IsoFileSystem& self = of(request);
  NodeId node = 0;
  if (!self.nodeOf(request, ino, &node)) return;
  const struct stat status = self.statusOf(node);
  fuse_reply_attr(request, &status, kForGood);
}

void IsoFileSystem::readlink(fuse_req_t request, fuse_ino_t ino) {
  IsoFileSystem& self = of(request);
  NodeId node = 0;
  if (!self.nodeOf(request, ino, &node)) return;
  std::string target;
  const Status status = self.volume_.readLink(node, &target);
  if (status != Status::ok) {
    fuse_reply_err(request, errorNumber(status));
  } else {
    fuse_reply_readlink(request, target.c_str());
  }
}

/// Told that this is not implemented, the kernel opens files without asking, and keeps their pages.
/// (fuse.h, FUSE_NO_OPEN_SUPPORT)
void IsoFileSystem::open(fuse_req_t request, fuse_ino_t, fuse_file_info* file) {
  if (of(request).openMayBeSkipped_) {
    fuse_reply_err(request, ENOSYS);
    return;
  }
  file->keep_cache = 1;
  fuse_reply_open(request, file);
}

void IsoFileSystem::opendir(fuse_req_t request, fuse_ino_t, fuse_file_info* file) {
  if (of(request).opendirMayBeSkipped_) {
    fuse_reply_err(request, ENOSYS);
    return;
  }
  file->keep_cache = 1;
  file->cache_readdir = 1;
  fuse_reply_open(request, file);
}

void IsoFileSystem::read(fuse_req_t request, fuse_ino_t ino, size_t size, off_t offset,
                         fuse_file_info*) {
  IsoFileSystem& self = of(request);
  NodeId node = 0;
  if (!self.nodeOf(request, ino, &node)) return;
  const Status status =
      self.volume_.locate(node, static_cast<std::uint64_t>(offset), size, &self.ranges_);
  if (status != Status::ok) {
    fuse_reply_err(request, errorNumber(status));
    return;
  }
  if (self.ranges_.empty()) {
    fuse_reply_buf(request, nullptr, 0);
    return;
  }
  // A fuse_bufvec has room for one buffer at its end; the others follow it.
  const std::size_t further = self.ranges_.size() - 1;
  const auto storage =
      std::make_unique<std::byte[]>(sizeof(fuse_bufvec) + further * sizeof(fuse_buf));
  auto* vector = new (storage.get()) fuse_bufvec{};
  vector->count = self.ranges_.size();
  fuse_buf* buffer = vector->buf;
  for (const isovolume::ByteRange& range : self.ranges_) {
    buffer = new (buffer) fuse_buf{};
    buffer->size = range.length;
    buffer->flags =
        static_cast<fuse_buf_flags>(FUSE_BUF_IS_FD | FUSE_BUF_FD_SEEK | FUSE_BUF_FD_RETRY);
    buffer->fd = self.source_.descriptor();
    buffer->pos = static_cast<off_t>(range.position);
    ++buffer;
  }
  fuse_reply_data(request, vector, FUSE_BUF_SPLICE_MOVE);
}

void IsoFileSystem::readdir(fuse_req_t request, fuse_ino_t ino, size_t size, off_t offset,
                            fuse_file_info*) {
  NodeId node = 0;
  if (!of(request).nodeOf(request, ino, &node)) return;
  of(request).replyListing(request, node, size, offset, Listing::plain);
}

void IsoFileSystem::readdirplus(fuse_req_t request, fuse_ino_t ino, size_t size, off_t offset,
                                fuse_file_info*) {
  NodeId node = 0;
  if (!of(request).nodeOf(request, ino, &node)) return;
  of(request).replyListing(request, node, size, offset, Listing::withAttributes);
}

/// Offsets 1 and 2 lie behind "." and "..", the others two behind the volume's own positions.
void IsoFileSystem::replyListing(fuse_req_t request, NodeId directory, size_t size, off_t offset,
                                 Listing listing) {
  constexpr off_t kDotEntries = 2;
  if (listing_.size() < size) listing_.resize(size);
  listingUsed_ = 0;
  bool fits = true;
  if (offset < 1) fits = addEntry(request, size, ".", directory, 1, listing);
  if (fits && offset < kDotEntries) {
    fits = addEntry(request, size, "..", volume_.parent(directory), kDotEntries, listing);
  }
  const auto position = static_cast<std::uint64_t>(std::max(offset - kDotEntries, off_t{0}));
  char name[kLongestName + 1];
  const auto visit = [&](const isovolume::DirectoryEntry& entry, std::uint64_t next) {
    std::memcpy(name, entry.name.data(), entry.name.size());
    name[entry.name.size()] = '\0';
    return addEntry(request, size, name, entry.node, static_cast<off_t>(next) + kDotEntries,
                    listing);
  };
  const Status status = fits ? volume_.readDirectory(directory, position, visit) : Status::ok;
  if (status != Status::ok) {
    fuse_reply_err(request, errorNumber(status));
  } else {
    fuse_reply_buf(request, listing_.data(), listingUsed_);
  }
}

bool IsoFileSystem::addEntry(fuse_req_t request, size_t size, const char* name, NodeId node,
                             off_t next, Listing listing) {
  char* place = listing_.data() + listingUsed_;
  const std::size_t room = size - listingUsed_;
  fuse_entry_param entry = entryOf(node);
  std::size_t needed = 0;
  if (listing == Listing::withAttributes) {
    // The kernel knows the directory and its parent already and must not count them once more.
    if (name[0] == '.' && (name[1] == '\0' || std::strcmp(name, "..") == 0)) entry.ino = 0;
    needed = fuse_add_direntry_plus(request, place, room, name, &entry, next);
  } else {
    needed = fuse_add_direntry(request, place, room, name, &entry.attr, next);
  }
  if (needed > room) return false;
  listingUsed_ += needed;
  return true;
}

/// The whole disc counts as used: a session's own volume size covers that session alone, and its
/// data begins behind all earlier ones.
void IsoFileSystem::statfs(fuse_req_t request, fuse_ino_t) {
  const IsoFileSystem& self = of(request);
  struct statvfs status = {};
  status.f_bsize = kBlockSize;
  status.f_frsize = kBlockSize;
  status.f_blocks = std::min<std::uint64_t>(
      std::uint64_t{self.start_.lba} + self.volume_.volumeSpaceSize(), self.source_.sizeInBlocks());
  status.f_namemax = kLongestName;
  fuse_reply_statfs(request, &status);
}

}  // namespace kelvane::isomount

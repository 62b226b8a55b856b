// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#define FUSE_USE_VERSION 314
#include <fuse_lowlevel.h>

#include <functional>
#include <vector>

#include "helpers/isovolume/iso_volume.h"

namespace kelvane::isomount {

/// Answers the kernel's requests about one volume. Each request is answered exactly once, on the
/// thread that serves the session. Nothing ever changes, so the kernel may remember every answer as
/// long as it likes.
///
/// The number by which the kernel knows a node is its handle plus one, so that the root has the
/// number that FUSE wants. Handles are never taken back, hence nothing is done when the kernel
/// forgets one.
class IsoFileSystem {
 public:
  /// `source` and `volume` are borrowed. `whenAnswering` is called once, when the kernel has taken
  /// up the session.
  IsoFileSystem(isovolume::FileBlockSource& source, isovolume::IsoVolume& volume,
                isovolume::SessionStart start, std::function<void()> whenAnswering);

  /// The operations, for a session whose user data is the IsoFileSystem.
  static const fuse_lowlevel_ops& operations();

 private:
  enum class Listing { plain, withAttributes };

  static IsoFileSystem& of(fuse_req_t request);
  static void init(void* self, fuse_conn_info* connection);
  static void lookup(fuse_req_t request, fuse_ino_t parent, const char* name);
  static void getattr(fuse_req_t request, fuse_ino_t ino, fuse_file_info* file);
  static void readlink(fuse_req_t request, fuse_ino_t ino);
  static void open(fuse_req_t request, fuse_ino_t ino, fuse_file_info* file);
  static void opendir(fuse_req_t request, fuse_ino_t ino, fuse_file_info* file);
  static void read(fuse_req_t request, fuse_ino_t ino, size_t size, off_t offset,
                   fuse_file_info* file);
  static void readdir(fuse_req_t request, fuse_ino_t ino, size_t size, off_t offset,
                      fuse_file_info* file);
  static void readdirplus(fuse_req_t request, fuse_ino_t ino, size_t size, off_t offset,
                          fuse_file_info* file);
  static void statfs(fuse_req_t request, fuse_ino_t ino);

  /// The handle for the kernel's number. False when there is no such node; the request has then
  /// been answered.
  bool nodeOf(fuse_req_t request, fuse_ino_t ino, isovolume::NodeId* node) const;
  [[nodiscard]] struct stat statusOf(isovolume::NodeId node) const;
  [[nodiscard]] fuse_entry_param entryOf(isovolume::NodeId node) const;

  void replyListing(fuse_req_t request, isovolume::NodeId directory, size_t size, off_t offset,
                    Listing listing);
  /// Appends an entry to `listing_`, unless it does not fit into `size` bytes.
  bool addEntry(fuse_req_t request, size_t size, const char* name, isovolume::NodeId node,
                off_t next, Listing listing);

  isovolume::FileBlockSource& source_;
  isovolume::IsoVolume& volume_;
  isovolume::SessionStart start_;
  std::function<void()> whenAnswering_;
  bool openMayBeSkipped_ = false;
  bool opendirMayBeSkipped_ = false;
  std::vector<isovolume::ByteRange> ranges_;
  std::vector<char> listing_;
  std::size_t listingUsed_ = 0;
};

}  // namespace kelvane::isomount

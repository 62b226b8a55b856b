// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

#include "helpers/isomount/iso_file_system.h"

namespace kelvane::isomount {

/// A mount served by an IsoFileSystem. The mount is taken away again when the object goes, where
/// the process still may.
class MountSession {
 public:
  /// Mounts read-only at `mountPoint`, in the mount table as `fsName` with the type fuse.`subtype`.
  /// As root the mount is made directly and every user may read it; else fusermount3 makes it, for
  /// the user alone unless /etc/fuse.conf says user_allow_other. Null on failure; libfuse and
  /// fusermount3 have then said why on standard error. `fileSystem` is borrowed.
  static std::unique_ptr<MountSession> mount(IsoFileSystem& fileSystem,
                                             const std::string& mountPoint,
                                             const std::string& subtype, const std::string& fsName);

  ~MountSession();
  MountSession(const MountSession&) = delete;
  MountSession& operator=(const MountSession&) = delete;

  /// Answers requests until the volume is unmounted. False when the session broke.
  bool serve();

 private:
  explicit MountSession(fuse_session* session) : session_(session) {}

  fuse_session* session_;
  bool mounted_ = false;
};

/// Takes away what is mounted at `mountPoint` in whatever state, as the session's own process no
/// longer can. Failures are ignored: there may be nothing.
void unmountLeftOver(const std::string& mountPoint);

}  // namespace kelvane::isomount

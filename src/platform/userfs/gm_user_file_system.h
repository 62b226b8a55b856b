// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/userfs/gm_user_file_system_delegate.h"

namespace kelvane {

/// Posted when the volume answers. The object is the GMUserFileSystem.
inline constexpr char kGMUserFileSystemDidMount[] = "kGMUserFileSystemDidMount";
/// Posted once the volume has gone, `willUnmount` has returned and the mount point was removed.
inline constexpr char kGMUserFileSystemDidUnmount[] = "kGMUserFileSystemDidUnmount";
/// Posted instead of the others where the mount failed. The user info is a std::string: why.
inline constexpr char kGMUserFileSystemMountFailed[] = "kGMUserFileSystemMountFailed";

/// What became of the request to unmount.
enum class UnmountResult {
  Started,     ///< The volume goes, or has gone; the notification follows.
  Busy,        ///< A program uses the volume (EBUSY); it stays mounted and works on.
  NotMounted,  ///< There was nothing to unmount.
  Failed,      ///< The system refused for another reason; the volume stays mounted.
};

/// A file system in this process, over libfuse's low-level interface, whose content a delegate
/// gives.
///
/// One thread of its own, which belongs to the object, mounts, serves all operations one after the
/// other, calls the delegate and posts the notifications (to the default notification centre). An
/// observer of these must not use the volume or call `unmount` on that thread: nobody would answer
/// it. It may delete the file system while it handles kGMUserFileSystemDidUnmount.
///
/// The delegate is borrowed and must live until kGMUserFileSystemDidUnmount or
/// kGMUserFileSystemMountFailed is posted, or this object is deleted.
///
/// What a program on the volume gets where the delegate fails without an error number, and where
/// the delegate has no such operation:
///
/// | operation | answer |
/// |---|---|
/// | anything on an item that is nowhere | ENOENT |
/// | an item that lost its name since it was looked up | ESTALE: the kernel looks again |
/// | name longer than 255 bytes, path longer than 3840 bytes | ENAMETOOLONG |
/// | create, mkdir, symlink where something stands | EEXIST |
/// | open with O_TRUNC, truncation to 0, of a read-only file | becomes the creation of a new file |
/// | open for reading and writing, or for appending, of a read-only file | EROFS, at the open |
/// | write to a read-only file opened for writing alone | EROFS, until it is truncated to 0 |
/// | truncation to another length of a read-only file | EROFS |
/// | chmod, chown, times of a read-only file or link | EROFS; success where nothing would change |
/// | chmod, chown, times of a read-only directory | a new directory that shadows only these |
/// | chmod, chown of the root | shown until the unmount; its folder stays as it is |
/// | chmod of a symbolic link | EOPNOTSUPP |
/// | unlink of a directory | EISDIR |
/// | rmdir | the delegate's removal, once the listing is empty; else ENOTEMPTY, ENOTDIR |
/// | rename onto a directory that lists something | ENOTEMPTY |
/// | rename of a directory onto a file, of a file onto a directory | ENOTDIR, EISDIR |
/// | rename into the item's own subtree | EINVAL |
/// | rename with RENAME_NOREPLACE onto something | EEXIST |
/// | rename with RENAME_EXCHANGE or RENAME_WHITEOUT | EINVAL |
/// | hard link; device node, pipe or socket | EPERM |
/// | extended attributes | the delegate's number; ENOSYS reaches programs as EOPNOTSUPP |
/// | fsync, fallocate, lseek for data and holes | done on the descriptor behind the open file |
/// | space exhausted as the delegate sees it | its number (ENOSPC) |
/// | statfs | the delegate's numbers in units of 2048 bytes; a deficit shows as 0 free |
/// | open, or a change of attributes, of a writable item that is refused | EACCES, EPERM |
/// | something breaks or runs out below | EIO, ENOSPC, EMFILE and the like, as errno has it |
/// | any other failure | EIO |
///
/// An item whose attributes the delegate leaves empty is a directory of mode 0777 if it lies in the
/// root or in a directory in the root; deeper ones are there only if their directory lists them, so
/// that things can be moved there.
class GMUserFileSystem {
 public:
  /// `isThreadSafe` says that the delegate could take operations in parallel. They come one at a
  /// time all the same: on one thread they are faster.
  GMUserFileSystem(GMUserFileSystemDelegate* delegate, bool isThreadSafe);

  /// Ends a volume that is still mounted, by force if it is busy, and waits for its thread (unless
  /// it runs on that very thread). `willUnmount` is called; no notification is posted.
  ~GMUserFileSystem();
  GMUserFileSystem(const GMUserFileSystem&) = delete;
  GMUserFileSystem& operator=(const GMUserFileSystem&) = delete;

  /// Whether a volume could be mounted here: /dev/fuse can be opened and, for an ordinary user, the
  /// mount helper is there. `reason`, if given, then takes one English sentence that says what is
  /// missing.
  static bool isAvailable(std::string* reason);

  /// Starts the mount and returns at once; a notification tells how it ended. Once an object.
  ///
  /// Makes the last directory of `path` if it is missing, and removes it again after the unmount if
  /// it made it. Refuses a path where something is mounted already; a mount left there by a process
  /// that died is cleaned away first.
  ///
  /// Options: "volname=NAME" becomes the source shown in the mount table; "negative_vncache" lets
  /// the kernel remember names that do not exist. "volicon=PATH", "local" and "-f" (stay in this
  /// process) ask for nothing more here. Others are passed on to libfuse.
  void mountAtPath(const std::string& path, const std::vector<std::string>& options);

  /// Asks the kernel to unmount, from any thread but the file system's own. Does not wait for the
  /// notification.
  UnmountResult unmount();

  /// For emergencies (the disc is gone, the process must end): takes the volume away even if
  /// programs use it; they get errors from then on. Delegate and observers see an ordinary unmount.
  /// Any thread.
  UnmountResult unmountLazily();

  /// Waits until the volume has gone and its notification has been handled. False where it has not
  /// after `milliseconds` (negative: no limit). Not on the file system's thread.
  bool waitUntilUnmounted(int milliseconds);

 private:
  class Impl;
  std::shared_ptr<Impl> impl_;  // Shared with the thread, which may outlive this object.
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvane {

/// One line of the kernel's mount table (proc(5), /proc/PID/mountinfo), with its octal escapes
/// undone.
struct MountTableLine {
  int64_t id = 0;
  int64_t parentId = 0;     ///< Its own or an unknown id for the root of what we see.
  std::string mountedOn;    ///< Absolute, without a trailing slash except for "/".
  std::string kernelType;   ///< As the kernel has it: "ext4", "iso9660", "fuse.cd9660".
  std::string mountedFrom;  ///< The source: "/dev/sr0", "/dev/kv0s0", "tmpfs".

  friend bool operator==(const MountTableLine&, const MountTableLine&) = default;
};

/// The file system that a path belongs to, as statfs(2) would give it on a system whose statfs
/// names types.
struct MountTableEntry {
  std::string type;         ///< "cd9660" for every ISO-9660 volume, otherwise the kernel's type.
  std::string mountedOn;    ///< The path at which it is mounted.
  std::string mountedFrom;  ///< The device, or whatever the file system names as its source.
  int64_t totalBlocks = 0;
  int64_t freeBlocks = 0;
  int64_t blockSize = 0;  ///< Bytes in one of these blocks.
};

/// The lines of a mountinfo text, in their order; lines that are not of its form are left out.
std::vector<MountTableLine> parseMountTable(std::string_view mountinfo);

/// The line of the mount that `path` lies on: the table is walked from its root as the kernel walks
/// the path, so of several mounts at one place the last counts, and what lies below a later mount
/// does not count. `path` is absolute, without links, "." and "..". Null where the table is empty.
const MountTableLine* mountOfPath(const std::vector<MountTableLine>& table, std::string_view path);

/// What the system's text calls the type: both the kernel's and the user-space ISO-9660 volumes are
/// "cd9660".
std::string fileSystemType(std::string_view kernelType);

/// The mount table of this process, now. Empty where /proc is not there.
std::vector<MountTableLine> readMountTable();

/// The mount table entry that `path` belongs to. A plain folder belongs to the file system it lies
/// on. Links are followed. Empty where the path cannot be examined: it does not exist, or the
/// program behind its file system is dead. Any thread; asks the file system, so it may wait for it.
std::optional<MountTableEntry> mountTableEntry(const std::string& path);

/// `mountPoint` as the mount table writes it: the links of the folders above it resolved. Does not
/// ask what is mounted there.
std::string resolvedMountPoint(const std::string& mountPoint);

/// Whether something is mounted exactly at `path`, answering or not.
bool isMountPoint(const std::string& path);

}  // namespace kelvane

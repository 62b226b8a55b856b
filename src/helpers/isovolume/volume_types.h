// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>

namespace kelvane::isovolume {

/// The handle of a file, directory or link. Handles are given out from 0, the root, upwards in the
/// order in which directories are read, and stay valid as long as the volume.
using NodeId = std::uint32_t;
inline constexpr NodeId kRootNode = 0;

/// How a request ended.
enum class Status {
  ok,
  notFound,
  notADirectory,
  notAFile,
  notALink,
  damaged,  ///< the disc cannot be read there, or what stands there makes no sense
  loop,     ///< the directory is one that was met elsewhere on the disc already
};

/// The error number that a program expects for `status` (0 for ok).
int errorNumber(Status status);

/// Whose names a volume shows.
enum class Naming { rockRidge, joliet, plain };

/// How deep directories may lie in one another; what lies deeper is not shown. A path of so many
/// levels is beyond what a program can name at once, and whoever walks the volume may recurse.
inline constexpr unsigned kDeepestLevel = 1024;

}  // namespace kelvane::isovolume

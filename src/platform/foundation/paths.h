// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Every fixed path of the application, formed in this one place.
///
/// All of them move under the folder that the environment variable KELVANEFS_PREFIX names, so that
/// tests need neither root's "/Volumes" nor the machine's only mount points. Thread-safe as long as
/// nobody changes the environment.
namespace kelvane::paths {

/// The prefix, without a trailing slash; empty on a user's machine.
std::string prefix();

/// "/Volumes", or "$XDG_RUNTIME_DIR/kelvanefs/Volumes" where "/Volumes" neither exists nor can be
/// made. Made on demand.
std::string volumesDirectory();

/// "/Volumes/tarnwick", where the writable volume is mounted.
std::string overlayMountPoint();

/// "/tmp".
std::string temporaryDirectory();

/// "/tmp/%i" with whole seconds since 1 January 2001, 00:00:00 UTC, truncated to a signed 32-bit
/// integer.
std::string overlayDirectory(int32_t secondsSinceReferenceDate);

/// Those seconds, now.
int32_t secondsSinceReferenceDate();

/// "/tmp/.%@.hide" with the overlay directory's last path component.
std::string hideListFile(std::string_view tmpDirPath);

/// "/tmp/%@.iso" with the overlay directory's last path component.
std::string burnImage(std::string_view tmpDirPath);

/// "/tmp/kelvanefsmount", the folder that holds the hidden mount point.
std::string hiddenMountFolder();

/// "/tmp/kelvanefsmount/.mnt", where the disc itself is mounted out of sight.
std::string hiddenMountPoint();

/// The last component of a path: "812" of "/tmp/812", and of "/tmp/812/".
std::string lastPathComponent(std::string_view path);

/// `path` with `component` appended, exactly one slash between the two: "/tmp/812" and "/a" give
/// "/tmp/812/a". The root
/// "/" as component gives the path itself.
std::string appendPathComponent(std::string_view path, std::string_view component);

}  // namespace kelvane::paths

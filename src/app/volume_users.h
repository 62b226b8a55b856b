// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelvane {

/// A process that keeps a volume from being unmounted.
struct VolumeUser {
  int64_t processIdentifier = 0;
  std::string program;  ///< The kernel's short name of it.
  std::string path;     ///< What it uses: an open file, or its working directory.
};

/// The processes that use something at or below `mountPoint`, as far as this user may know of them
/// (/proc). Any thread.
std::vector<VolumeUser> programsUsing(const std::string& mountPoint);

/// A sentence a program: "sleep (process 812) uses /Volumes/tarnwick/docs."
std::string describeVolumeUsers(const std::vector<VolumeUser>& users);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/child_task.h"

namespace kelvane {

/// A disc to be mounted read-only by the user-space ISO-9660 volume.
struct DiscMount {
  std::string
      bsdName;  ///< Of the drive or the slice: "kv0s0". The mount's source is "/dev/" and this.
  int64_t sessionStart = 0;  ///< The block at which the session to be shown begins.
  std::string mountPoint;    ///< An existing folder.
};

/// Mounts the disc and waits until the volume answers. False, with one line in `error`, where it
/// cannot. The volume is served by a process of its own, which outlives this one, until it is
/// unmounted. Any thread.
bool mountDisc(const DiscMount& mount, std::string* error);

/// Starts to mount the disc and does not wait. The task ends when the volume answers or has failed;
/// it may be deleted at any time after its end. Null, with a log line, where it cannot be started.
std::unique_ptr<ChildTask> startMountingDisc(const DiscMount& mount);

/// The volume name of the ISO-9660 volume that the session at `sessionStart` holds: empty text for
/// a volume without a name, no value where there is no such volume. Any thread.
std::optional<std::string> volumeNameOfDisc(const std::string& bsdName, int64_t sessionStart);

}  // namespace kelvane

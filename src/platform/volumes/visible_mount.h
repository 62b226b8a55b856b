// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kelvane {

/// A disc with a volume that everybody is to see.
struct VisibleDisc {
  std::string drive;         ///< The drive's BSD name ("sr0").
  std::string bsdName;       ///< Of what is mounted: the drive, or its first slice ("kv0s0").
  int64_t sessionStart = 0;  ///< The block at which the session to be shown begins.
};

/// Has the desktop mount the disc of a real drive, and waits for its answer. True where it has
/// mounted it, or may still do so. Any thread.
bool desktopMounts(const std::string& drive);

/// Unmounts what others have mounted of a disc that has left its real drive: UDisks2 leaves it
/// where it is, and the next disc would be taken for the one before. Nothing happens where the
/// drive holds a disc or cannot be asked, and what is in use stays. Any thread.
void unmountAbsentDisc(const std::string& drive);

/// Mounts the disc in a folder of its own below the folder of volumes, and waits until the volume
/// answers. The folder; empty where there is no ISO-9660 volume, or where it cannot be mounted,
/// which is logged. Any thread.
std::optional<std::string> mountVisibly(const VisibleDisc& disc);

/// The name of the folder for a volume called `volumeName`, without the number of a taken one.
std::string visibleFolderName(const std::string& volumeName);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

#include "platform/volumes/volume_services.h"

namespace kelvane {
class DRDevice;
}

/// Operations asked of a drive about the disc in it. Any thread, unless said otherwise.
namespace kelvane::quellbrook {

/// The path at which the drive's disc is mounted visibly: of the visible volumes, in listing order,
/// the first whose source begins with "/dev/" and the BSD name of the drive (of `fallbackBsdName`
/// where the drive has none). The beginning alone counts, so that a slice matches its drive; "kv1"
/// therefore also matches a volume of "kv10".
std::optional<std::string> mountPathForFallbackBsdName(
    const DRDevice& device, const std::optional<std::string>& fallbackBsdName,
    VolumeServices& services = VolumeServices::system());

/// Takes the disc's visible volume away and mounts the disc at the hidden mount point. Gives that
/// path, or no value where it fails (with a line in the system log, except where the volume of the
/// visible path cannot be found).
///
/// Blocks for up to 5 seconds while the visible volume is in use and up to 15 while the hidden one
/// comes. Never called on the main thread.
std::optional<std::string> remounthidden(const DRDevice& device,
                                         VolumeServices& services = VolumeServices::system());

/// Releases the hidden mount, unless the session string says that nothing is recorded. Tries once;
/// failures are ignored. The disc must have at least one track reference (see sessionString).
void unmount(const DRDevice& device, VolumeServices& services = VolumeServices::system());

/// The value of mkisofs's "-C": the start addresses of the next-to-last and the last (open) track
/// as the drive reports them, "0,11702"; a single value where the second is missing; "0" for a disc
/// with one track only. No value where the disc has no tracks or the first address is missing:
/// keeping such discs away is the callers' business.
std::optional<std::string> sessionString(const DRDevice& device);

/// Whether the drive's disc is mounted visibly with an ISO-9660 file system (type "cd9660").
/// Sources are compared as for mountPathForFallbackBsdName; a volume of another type does not end
/// the search.
bool mediaKelvaneCompliant(const DRDevice& device,
                           const std::optional<std::string>& fallbackBsdName,
                           VolumeServices& services = VolumeServices::system());

/// The size in megabytes (1048576 bytes) of the volume that `path` belongs to: all of its blocks,
/// not those in use. 0.0 where the path cannot be examined.
double fsMediaMBUsed(const DRDevice& device, const std::string& path,
                     VolumeServices& services = VolumeServices::system());

}  // namespace kelvane::quellbrook

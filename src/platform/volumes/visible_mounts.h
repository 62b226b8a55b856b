// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/recording/dr_device.h"
#include "platform/volumes/visible_mount.h"

namespace kelvane {

/// Mounts discs that the desktop does not: visibly, each in a folder of its own below the folder of
/// volumes, from the moment a disc with content is inserted until it is gone. That is every disc in
/// an emulated drive; of a real one, the desktop is asked to mount it first. Main thread only.
///
/// The disc of an emulated drive is mounted when `update` returns. That of a real drive is mounted
/// on a thread of its own, which only those wait for who want to have the drive for themselves; and
/// what the desktop leaves mounted of a disc that has gone is unmounted there.
///
/// A volume is named after the disc: "/" and control characters become "_", no name at all becomes
/// "CDROM", and where the name is taken " 1", " 2" … is appended. The mount's source is the first
/// slice of a CD ("/dev/kv0s0"), a DVD's own device ("/dev/kv0"). A disc without an ISO-9660 volume
/// is not mounted.
class VisibleMounts {
 public:
  /// Every drive there is; see DRDevice::devices().
  using Drives = std::function<std::vector<DRDevice*>()>;

  explicit VisibleMounts(Drives drives = &DRDevice::devices);
  /// Unmounts everything that this application has mounted from the drives, whichever instance.
  ~VisibleMounts();
  VisibleMounts(const VisibleMounts&) = delete;
  VisibleMounts& operator=(const VisibleMounts&) = delete;

  /// Observes the drives from now on. To be followed by the controller's own registration before
  /// the event loop turns: observers are called in their order, so the disc is mounted when the
  /// scan looks for it, and the first notification of each drive reaches both. A second call
  /// changes nothing.
  void start();

  /// Keeps the disc of the drive from being mounted visibly while it is open in the application:
  /// from before it is opened until it has been cleaned up. A mount that stands stays, and one that
  /// is being made is waited for.
  void hold(const std::string& bsdName);
  /// Ends that, and brings the drive's mount up to date at once.
  void release(const std::string& bsdName);

  /// Unmounts all that this application has mounted from the drive, visible or hidden, whether it
  /// is in use or not, as a disc that leaves the drive does; a mount that is being made is waited
  /// for. To be called right before a disc is ejected.
  void unmountAllOf(const std::string& bsdName);

  /// Brings the mount of one drive in line with its disc. `start` arranges that it is called. While
  /// its disc is being mounted, that is done again when the mount has ended.
  void update(DRDevice& device);
  /// The same for every drive whose disc is not being mounted already, for those who cannot wait
  /// for the notification.
  void updateAll();

 private:
  struct Mounted {
    std::string mountPoint;
    int64_t sessionStart = 0;
  };

  /// What takes its time with the disc of a real drive. It gives the folder that it has mounted the
  /// disc at, if any.
  using Work = std::function<std::optional<std::string>()>;

  struct Begun {
    uint64_t number = 0;
    VisibleDisc disc;
    std::future<std::optional<std::string>> folder;
    bool isOutOfDate = false;  // The drive has told of something since.
  };

  void deviceStatusChanged(const void* device);
  void updateDrive(const std::string& bsdName);
  void noteMount(const VisibleDisc& disc, const std::optional<std::string>& folder);
  void beginFor(const VisibleDisc& disc, Work work);
  bool isAtWork(const std::string& bsdName);
  void awaitWork(const std::string& bsdName);
  void workHasEnded(const std::string& bsdName, uint64_t number);

  Drives drives_;
  bool observesDrives_ = false;
  std::map<std::string, Mounted> mounted_;  // By the drive's BSD name.
  std::set<std::string> held_;
  std::set<std::string> seen_;          // Every drive that has been looked at.
  std::map<std::string, Begun> begun_;  // By the drive's BSD name.
  uint64_t worksBegun_ = 0;
  // For what is queued on the main thread.
  const std::shared_ptr<VisibleMounts*> self_ = std::make_shared<VisibleMounts*>(this);
};

/// The BSD name of what is mounted of the drive's disc: the first slice of a CD-R or CD-RW
/// ("kv0s0"), the drive itself for every other medium.
std::string mountableBsdName(const DRDevice& device);

}  // namespace kelvane

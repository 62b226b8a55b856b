// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/recording/media_state.h"
#include "platform/recording/mmc/event_status.h"

class QFileSystemWatcher;
class QTimer;

namespace kelvane {

class Drive;
class DRDevice;
class DriveEvents;

/// Notices what happens to the drives, and posts DRDeviceStatusChangedNotification for each change.
///
/// The folder of an emulated disc is watched by the kernel, and udev tells of real drives; where no
/// udevd runs, these are asked every two seconds whether their medium has changed. All of it only
/// makes the watcher look: a notification is posted where the drive is in another state than
/// before. It also looks every two seconds as long as something goes on at a drive whose end nobody
/// tells. With nothing to ask for, it sleeps. Main thread only.
class DriveWatcher {
 public:
  static DriveWatcher& shared();

  DriveWatcher();
  ~DriveWatcher();

  /// Starts to watch, and posts one notification for each drive. Does nothing where it watches
  /// already, or without an application object.
  void start();
  /// Stops. Called by itself when the application object goes.
  void stop();

  /// Whether it looks every two seconds at present.
  bool isPolling() const;

  /// Looks at every drive soon, from the event loop. Without effect before `start`.
  void checkSoon();
  /// Asks the drive of this name alone, and those that are new: a drive at rest may have to spin up
  /// its disc to answer.
  void checkSoon(const std::string& bsdName);
  /// Takes notice soon of what others have found out by asking. Drives that are known are not
  /// asked. Any thread.
  void takeNoticeSoon();

 private:
  // All by which one state of a drive differs from another.
  struct Observation {
    bool valid = false;
    bool busy = false;
    /// Whether udev has given the node its owner and rights.
    bool settled = true;
    int trayOpenings = 0;
    MediaState media;

    friend bool operator==(const Observation&, const Observation&) = default;
  };
  struct Watched {
    Observation observation;
    std::optional<mmc::MediaEventStatus> tray;
    /// How often it was asked again in vain since its last news.
    int looksInVain = 0;
  };
  /// The names of drives.
  using Names = std::set<std::string>;

  static Observation observe(const DRDevice& device, const MediaState& media);
  static bool answersAtLast(const Drive& drive);
  bool look(const DRDevice& device, Watched& known);
  void check(const Names& worthAQuestion);
  void checkNews();
  void poll();
  void pollWhileNeeded();
  bool needsPoll(const DRDevice& device) const;
  bool isInFlux(const DRDevice& device) const;
  void watchFolders();
  bool trayHasMoved(const DRDevice& device);
  void folderHasChanged(const std::string& folder);

  std::unique_ptr<QFileSystemWatcher> folders_;
  std::unique_ptr<QTimer> soon_;
  std::unique_ptr<QTimer> poll_;
  std::unique_ptr<DriveEvents> events_;  // Null where nothing can be heard.
  std::map<const DRDevice*, Watched> watched_;
  Names drivesWithNews_;
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/recording/dr_device_status.h"
#include "platform/recording/drive_claim.h"
#include "platform/recording/file_lock.h"
#include "platform/recording/media_state.h"
#include "platform/recording/mmc/event_status.h"
#include "platform/recording/mmc_transport.h"

namespace kelvane {

/// The names and paths that belong to a drive. They never change.
struct DriveIdentity {
  std::string bsdName;
  std::string ioRegistryEntryPath;
  /// Exists for as long as the drive does.
  std::string presencePath;
  /// Locked by the process that has the drive for itself.
  std::string exclusiveLockPath;
  /// Locked by a recorder while it writes, so that everybody sees that the drive is busy.
  std::string recordingLockPath;
  /// The folder of an emulated drive's disc.
  std::optional<std::string> emulatedDisc;
  /// The drive's path for a program that opens it itself, and what that program's environment needs
  /// besides for the path to work.
  std::string programPath;
  std::map<std::string, std::string> programEnvironment;
  /// Why no such program can work here; empty where nothing stands against it.
  std::string programProblem;
};

/// The connection to one drive: the transport, what was last heard over it, and the locks.
/// Thread-safe.
class Drive {
 public:
  Drive(DriveIdentity identity, std::unique_ptr<mmc::Transport> transport);

  const DriveIdentity& identity() const { return identity_; }

  bool exists() const;
  std::string displayName() const;
  bool writesCD() const;

  /// Asks the drive, or repeats what it last said where it is being recorded on or cannot be asked
  /// now. A drive that is gone has no disc. One that becomes ready has the disc that it had, until
  /// it is found with its tray open or without a disc; what it has then is read anew when it is
  /// ready.
  MediaState mediaState() const;
  /// Where the drive cannot be asked now, what was read of the same disc before. Without media
  /// information where nothing was, and while the drive becomes ready.
  DRDeviceStatus status() const;
  /// What `mediaState` gave last. The drive is not asked.
  MediaState knownMediaState() const;
  /// Whether the drive could not be asked last for its state, or for the status of a disc of which
  /// nothing is known, so that it is worth another question. Not where its node is closed to this
  /// user. The drive is not asked.
  bool isWorthAnotherQuestion() const;
  /// The blocks that a medium which is written over at will has in all; empty where the drive does
  /// not say, or is left alone.
  std::optional<uint32_t> formatCapacity() const;

  /// Tells the disc from others, as readMediaIdentity does; empty where the drive is left alone,
  /// cannot be asked now or becomes ready.
  std::string mediaIdentity() const;

  bool acquireExclusiveAccess();
  void releaseExclusiveAccess();
  /// Keeps everybody else from mounting the disc, until `letOthersMount` or `giveUpClaim`: a mount
  /// and a holder of an exclusive descriptor (O_EXCL) of the node shut each other out. By it our
  /// rule for udev knows that the button must not open the tray meanwhile. False where the disc is
  /// mounted, or claimed by another program. Of an emulated drive, whose disc nobody else can
  /// mount, always true.
  bool keepOthersFromMounting();
  void letOthersMount();
  /// The claim by which others are kept from mounting, for the program that will record on the
  /// drive and needs the exclusive descriptor itself. Null where there is none.
  std::unique_ptr<DriveClaim> giveUpClaim();
  /// Whether another process's recorder works on the drive, as far as that can be seen.
  bool isRecordedByAnyone() const;

  bool openTray();
  bool closeTray();
  /// How often the tray was opened from here.
  int trayOpenings() const { return trayOpenings_; }

  /// From now on the drive is left alone, and the last answers are repeated.
  void leaveAlone();
  void askAgain();

  /// Whether the medium was changed, as GET EVENT STATUS NOTIFICATION tells it.
  std::optional<mmc::MediaEventStatus> mediaEvent() const;

 private:
  void learnNames() const;
  void askForState() const;
  void askForStatus() const;
  void forgetDisc() const;
  void forgetStatus() const;

  DriveIdentity identity_;
  std::unique_ptr<mmc::Transport> transport_;

  mutable std::mutex mutex_;  // Guards the transport and all that follows.
  mutable std::optional<std::string> displayName_;
  mutable std::optional<bool> writesCD_;
  mutable MediaState lastState_;
  mutable DRDeviceStatus lastStatus_;
  // Or not asked for yet, or closed to this user.
  mutable bool stateWasAnswered_ = true;
  mutable bool statusWasAnswered_ = true;
  std::optional<FileLock> exclusiveAccess_;
  std::unique_ptr<DriveClaim> claim_;
  bool leftAlone_ = false;
  std::atomic<int> trayOpenings_{0};
};

}  // namespace kelvane

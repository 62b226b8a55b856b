// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <latch>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "app/controller_services.h"
#include "media/device_record.h"
#include "overlayfs/overlay_changes.h"
#include "platform/foundation/notification_center.h"
#include "ui/window_outlets.h"

namespace kelvane {

class BurnFSDelegate;
class BurnSurvey;
class DRBurn;
class DRDevice;
class DVDBurn;
class GMUserFileSystem;
class KVLicenseController;
struct ScanOutcome;

/// The one long-lived controller: it holds the state of the current disc, mount and burn, drives
/// the window, and is the target of every device, mount and burn notification. One source file a
/// workflow.
///
/// What is not marked otherwise belongs to the main thread. The mount worker writes
/// `currentDevice`, `currentDeviceDictionary`, `tmpDirPath`, `myBurnFSDelegate` and `tarnwickFS`;
/// the main thread reads the last three only once the mount has been announced. `fuseDidUnmount`
/// writes `sizetoburn` on the file system's thread, and the main thread reads it in what that
/// thread schedules.
class KVController : public WindowActions {
 public:
  /// Both are borrowed and must outlive the controller.
  KVController(WindowOutlets& window, const ControllerServices& services);
  ~KVController() override;
  KVController(const KVController&) = delete;
  KVController& operator=(const KVController&) = delete;

  // Start-up.
  /// Prepares the window, once it exists.
  void awakeFromNib();
  /// The start-up sequence; called once, after launching. Goes no further than the licence
  /// agreement where the user does not agree.
  void initialiseController();
  /// Reserves every drive and registers for the notifications of drives and burns. The first scan
  /// runs with the first notification of a drive.
  void initialiseDR();
  /// Whether start-up has come as far as the drives: not without the user's agreement, nor where
  /// the file system is missing.
  bool observesDrives() const { return observesDrives_; }
  void installationAlertDidEnd(int returnCode);

  // The list of discs.
  /// Schedules a scan on the main thread; from any thread. However often it is asked for, one scan
  /// waits at the most.
  void scanForMedia();
  void performScanForMedia();
  bool tableViewShouldSelectRow(int32_t row) override;
  bool discIsTaken() const override;
  void tableViewDoubleClicked() override;

  // One disc, from its opening to the question whether to burn.
  void mountBurnFS() override;
  void showDisk() override;
  bool volumeTakesFiles() const override;
  void addFiles(const std::vector<std::string>& files) override;
  /// Closes the volume: asks the file system to unmount, and tells the user where a program still
  /// uses it. False where the volume stays open.
  bool closeVolume();
  /// The file system could not be mounted. What was made for it is taken back; the disc counts as
  /// being opened until it is taken out of the drive.
  void mountFailed();

  // Burning.
  void burnConfirmationDidConfirm() override;
  void burnConfirmationDidCancel() override;
  void burnConfirmationDidKeep() override;
  void burn();
  void cleanupWithoutBurn();
  void commonBurnCleanup();

  // Erasing.
  void attemptErase() override;
  void attemptEraseDidEnd(int returnCode);
  /// Starts the erase of the disc that is selected now.
  void performErase();

  // The views of the window.
  void showMessageOrSelectionView();
  void showMountedView();
  void showBurnView();
  /// Schedules a refresh of the opened disc's view; from any thread. However often it is asked for,
  /// one refresh waits at the most.
  void updateMountedItemView();
  void performUpdateMountedItemView();

  /// Whether a single usable disc is opened without the user's choice, as a window does, or only
  /// listed, for whoever is after something else than its files. Opened unless set.
  enum class SingleDisc { Opened, Listed };
  void setSingleDisc(SingleDisc treatment) { singleDisc_ = treatment; }

  /// Who asks for the user's agreement at start-up; borrowed, null where nobody is asked.
  void setLicenseController(KVLicenseController* controller) { licenseController_ = controller; }

  // Properties.
  bool allowMainWindowUnhide() const { return allowMainWindowUnhide_; }
  void setAllowMainWindowUnhide(bool allow) { allowMainWindowUnhide_ = allow; }
  /// The overlay file system; null when no disc is open. From any thread; whoever asks holds it
  /// until done with it.
  std::shared_ptr<GMUserFileSystem> tarnwickFS() const;
  void setTarnwickFS(std::shared_ptr<GMUserFileSystem> fileSystem);
  std::string openButtonCaption() const { return openButtonCaption_; }
  void setOpenButtonCaption(const std::string& caption);
  /// The record of the disc being opened or opened; from any thread.
  std::optional<DeviceRecord> currentDeviceDictionary() const;
  void setCurrentDeviceDictionary(const DeviceRecord& record);
  bool burnInProgress() const { return burnInProgress_; }
  /// While it is set the desktop is asked not to interrupt. Where it is cleared the window is told
  /// how the burn ended.
  void setBurnInProgress(bool inProgress);
  bool mediaIsMounted() const { return mediaIsMounted_; }
  /// Where the value changes: sets header, caption and view.
  void setMediaIsMounted(bool mounted);
  /// The drive whose disc is opened or being opened; null when none is. Borrowed.
  DRDevice* currentDevice() const { return currentDevice_; }
  void setCurrentDevice(DRDevice* device) { currentDevice_ = device; }
  const std::string& tmpDirPath() const { return tmpDirPath_; }
  void setTmpDirPath(const std::string& path) { tmpDirPath_ = path; }
  /// What the overlay's own files take up, in bytes; known once the volume is unmounted.
  double sizetoburn() const { return sizetoburn_; }
  void setSizetoburn(double bytes) { sizetoburn_ = bytes; }

  /// Where the content views stand: in the window, and parked to either side of it.
  static constexpr Rect inWindowRect{0, 33, 402, 86};
  static constexpr Rect leftOfWindowRect{-402, 33, 402, 86};
  static constexpr Rect rightOfWindowRect{402, 33, 402, 86};

 private:
  // The list of discs (kv_controller_scan.cpp).
  void applyScanOutcome(const ScanOutcome& outcome);
  /// Whether the drive certainly holds another disc than the one of the record.
  static bool holdsAnotherDisc(const DeviceRecord& record);
  void giveUpDiscThatFailedToMount();

  // Opening and closing (kv_controller_mount.cpp).
  /// The body of the mount worker. `discIsNoted` is counted down once the current device is set.
  void mountBurnFSinBackground(std::latch& discIsNoted);
  /// Takes the disc's own volume out of sight and gives the path of the hidden mount. Empty, and
  /// logged, where it fails; `inUse` says then who uses the volume, where that can be seen.
  std::optional<std::string> takeOverDiscWithContent(std::string& volumeName, std::string& inUse);
  void mountOverlay(const DeviceRecord& record, const std::string& volumeName,
                    const std::optional<std::string>& discMountPath, double usedMB);
  void refuseToOpen(const std::string& reason);
  void listDiscsAnew();
  void makeUpForRefusedScan();
  void registerMountObservers();
  void respondToBurnFSMounting();
  void performRespondToBurnFSMounting();
  /// `detail` says what is in the way; empty where the log tells.
  void showPerformMountFailedAlertAndReset(const std::string& detail = {});
  void fuseDidUnmount();
  void releaseOverlay();
  void concludeUnmount();
  void showDeletionsLostAlert();
  void respondToUnexpectedMediaEject();
  void discSizeDidChange();

  // Burning (kv_controller_burn.cpp, kv_controller_cd.cpp, kv_controller_dvd.cpp).
  void removeOverlayAndHideList();
  bool discIsOursAlone();
  std::string whyOverlayIsUnsafe() const;
  std::string whyHideListIsUnsafe() const;
  void surveyBurn();
  void endBurnQuestion();
  std::string putChangesAside();
  void refuseBurn(const std::string& messageKey, const std::string& reason,
                  const std::string& informativeKey = "SessionNotPreparedLong");
  void withdrawBurnQuestion();
  void ejectMediaOfCurrentDevice();
  void giveUpCurrentDevice();
  void endInterruptedOpening();
  void burnCD();
  std::string whyImagingIsUnsafe(const std::string& sessionString) const;
  std::string buildImage(const std::vector<std::string>& arguments);
  void waitUntilMediumHasSettled();
  void startCDBurn();
  void imagingFailed(const std::string& errors);
  void cdburnstatuschanged(const Notification& notification);
  void CDBurnFinished();
  void burnDVD();
  bool prepareBlankDVD(DRDevice& device);
  void startDVDBurn(DRDevice& device);
  void burnDVDDidFinish(const Notification& notification);
  void finishDVDBurn(const DVDBurn& burn);

  // Erasing (kv_controller_erase.cpp).
  void eraseClosedDisc();
  void eraseDisc(DRDevice& device);
  void refuseErase(const std::string& messageKey, const std::string& detail);

  /// Queues `work` on the main thread. It comes to nothing once the controller is gone.
  void performLater(std::function<void()> work);
  std::function<void()> ifAlive(std::function<void()> work) const;

  WindowOutlets& window_;
  const ControllerServices& services_;

  KVLicenseController* licenseController_ = nullptr;
  bool allowMainWindowUnhide_ = false;
  bool observesDrives_ = false;
  SingleDisc singleDisc_ = SingleDisc::Opened;
  std::atomic<DRDevice*> currentDevice_ = nullptr;
  mutable std::mutex currentDeviceDictionaryMutex_;
  std::optional<DeviceRecord> currentDeviceDictionary_;  // Guarded by the mutex above.
  std::string burnImagePath_;
  std::string tmpDirPath_;
  // Written with `sizetoburn`.
  bool hideListIsWhole_ = true;
  OverlayChanges changes_;
  int64_t nominallyFree_ = 0;  ///< Bytes that were free on the volume when it was opened.
  /// The hidden mount of the opened disc; empty for a blank one. Written by the mount worker.
  std::optional<std::string> discMountPath_;
  std::string openButtonCaption_;
  bool scanWasRefused_ = false;  ///< While a disc was being opened.
  bool mountHasFailed_ = false;  ///< That of the current device's disc.
  bool mediaIsMounted_ = false;
  bool burnInProgress_ = false;
  BurnEnd burnEnd_ = BurnEnd::Failed;  ///< Of the burn in progress, as far as is known.
  std::shared_ptr<void> inhibition_;
  bool isBurnInQuestion_ = false;       // The burn confirmation sheet is shown.
  std::unique_ptr<BurnSurvey> survey_;  // While it is, if it tells what will change.
  std::unique_ptr<DRBurn> myBurn_;
  /// The overlay directory of the volume that is being closed in order to erase its disc; else
  /// empty. Each opened volume has one of its own, so this never outlives the volume it is meant
  /// for.
  std::string volumeClosedToErase_;
  std::unique_ptr<DVDBurn> myDVDBurn_;  // Owned here, used only to be deleted when it has ended.
  mutable std::mutex tarnwickFSMutex_;
  std::unique_ptr<BurnFSDelegate>
      myBurnFSDelegate_;  // This and the next are guarded by the mutex above.
  std::shared_ptr<GMUserFileSystem> tarnwickFS_;
  double sizetoburn_ = 0;

  std::atomic<bool> scanWaits_ = false;
  std::atomic<bool> mountedItemUpdateWaits_ = false;
  std::thread mountWorker_;
  // Queued work holds it weakly.
  std::shared_ptr<void> self_ = std::make_shared<char>();
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: the life of one opened disc, from the request to open it to the question whether to
// burn.
#include <sys/xattr.h>

#include <filesystem>
#include <fstream>
#include <latch>
#include <system_error>
#include <utility>

#include "app/file_reasons.h"
#include "app/kv_controller.h"
#include "app/volume_stays_alert.h"
#include "app/volume_users.h"
#include "app/warning_alert.h"
#include "burn/volume_identifier.h"
#include "media/quellbrook.h"
#include "overlayfs/burn_fs_delegate.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/own_files.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "platform/foundation/user_defaults.h"
#include "platform/recording/dr_device.h"
#include "platform/userfs/gm_user_file_system.h"
#include "ui/copy_job.h"
#include "ui/media_controller.h"

namespace kelvane {
namespace {

constexpr char kBlankVolumeName[] = "untitled";
constexpr std::chrono::seconds kSettlingTime{1};

/// Makes the file that shows the volume to be writable, gives it an attribute and removes it again.
/// Failures are ignored.
void probeVolume() {
  const std::string probe = paths::overlayMountPoint() + "/.kvfsvolume";
  std::ofstream(probe).close();
  lsetxattr(probe.c_str(), "dummy", "", 0, 0);
  std::error_code failure;
  std::filesystem::remove(probe, failure);
}

/// The path, of those that an opened disc needs in the folder of temporary files, at which somebody
/// else's item stands; empty where there is none.
std::string pathInTheWay(const std::string& tmpDirPath) {
  for (const std::string& directory : {tmpDirPath, paths::hiddenMountFolder()}) {
    if (directoryState(directory) == PathState::Foreign) return directory;
  }
  for (const std::string& file : {paths::hideListFile(tmpDirPath), paths::burnImage(tmpDirPath)}) {
    if (plainFileState(file) == PathState::Foreign) return file;
  }
  return {};
}

}  // namespace

void KVController::mountBurnFS() {
  const std::vector<DeviceRecord> selected = window_.mediaController().selectedObjects();
  if (selected.empty() && !mediaIsMounted_) {
    window_.beep();
    return;
  }
  if (burnInProgress_) {
    window_.beep();
    return;
  }
  if (!selected.empty() && selected.back().unsupportedString) return;
  if (!mediaIsMounted_ && currentDevice_ != nullptr) return;
  if (mediaIsMounted_) {
    closeVolume();
    return;
  }
  window_.setHeaderLine(localizedString("headerDisksMounting"));
  services_.discIsOpened(selected.back().DRDevice->bsdName());
  if (mountWorker_.joinable()) mountWorker_.join();
  // The worker notes the disc first thing. That moment is waited for, so that no second request
  // slips in before it.
  std::latch discIsNoted(1);
  mountWorker_ = std::thread([this, &discIsNoted] { mountBurnFSinBackground(discIsNoted); });
  discIsNoted.wait();
}

void KVController::mountBurnFSinBackground(std::latch& discIsNoted) {
  const DeviceRecord record = window_.mediaController().selectedObjects().back();
  setCurrentDeviceDictionary(record);
  setCurrentDevice(record.DRDevice);
  setTmpDirPath(paths::overlayDirectory(paths::secondsSinceReferenceDate()));
  discIsNoted.count_down();

  if (holdsAnotherDisc(record)) {
    systemLog("%@ holds another disc by now. Looking again.", record.DRDevice->bsdName());
    performLater([this] { listDiscsAnew(); });
    return;
  }
  if (const std::string path = pathInTheWay(tmpDirPath_); !path.empty()) {
    refuseToOpen(reasonForeignItem(path));
    return;
  }
  std::string volumeName = kBlankVolumeName;
  std::optional<std::string> discMountPath;
  double usedMB = 0;
  if (record.consideredBlank.value_or(false)) {
    // One with content has been mounted out of sight before nobody else may; of this one there is
    // nothing to mount, and nothing else that would keep the drive's button from taking it out.
    services_.volumes->keepOthersFromMounting(*record.DRDevice);
  } else {
    std::string inUse;
    discMountPath = takeOverDiscWithContent(volumeName, inUse);
    if (!discMountPath) {
      performLater([this, inUse] { showPerformMountFailedAlertAndReset(inUse); });
      return;
    }
    usedMB = quellbrook::fsMediaMBUsed(*record.DRDevice, *discMountPath, *services_.volumes);
  }
  mountOverlay(record, volumeName, discMountPath, usedMB);
}

std::optional<std::string> KVController::takeOverDiscWithContent(std::string& volumeName,
                                                                 std::string& inUse) {
  const DRDevice& device = *currentDevice_.load();
  const auto mountPath =
      quellbrook::mountPathForFallbackBsdName(device, std::nullopt, *services_.volumes);
  if (!mountPath) {
    systemLog(
        "Could not get volume name of disk with content! kelvanefs not mounted. Showing error.");
    return std::nullopt;
  }
  volumeName = paths::lastPathComponent(*mountPath);
  auto hiddenMountPath = quellbrook::remounthidden(device, *services_.volumes);
  if (!hiddenMountPath) {
    systemLog("Remounting of disk with content failed! kelvanefs not mounted. Showing error.");
    inUse = describeVolumeUsers(programsUsing(*mountPath));
  }
  return hiddenMountPath;
}

void KVController::mountOverlay(const DeviceRecord& record, const std::string& volumeName,
                                const std::optional<std::string>& discMountPath, double usedMB) {
  OverlayInfo info;
  info.totalMB = std::strtof(record.totalMB.value_or("0").c_str(), nullptr);
  info.usedMB = usedMB;
  myBurnFSDelegate_ = std::make_unique<BurnFSDelegate>(tmpDirPath_, discMountPath, info);
  if (!myBurnFSDelegate_->overlayDirectoryIsOwn()) {
    refuseToOpen(reasonForeignItem(tmpDirPath_));
    return;
  }
  discMountPath_ = discMountPath;
  const auto fileSystem = std::make_shared<GMUserFileSystem>(myBurnFSDelegate_.get(), false);
  setTarnwickFS(fileSystem);
  const std::string icon = Bundle::mainBundle().pathForResource("disk", "icns").value_or("");
  const std::vector<std::string> options = {format("volname=%@", volumeName),
                                            format("volicon=%@", icon), "local", "-f",
                                            "negative_vncache"};
  registerMountObservers();
  fileSystem->mountAtPath(paths::overlayMountPoint(), options);
}

// On the mount worker.
void KVController::refuseToOpen(const std::string& reason) {
  systemLog("%@ kelvanefs not mounted. Showing error.", reason);
  performLater([this, reason] { showPerformMountFailedAlertAndReset(reason); });
}

void KVController::registerMountObservers() {
  NotificationCenter& center = NotificationCenter::defaultCenter();
  center.addObserver(this, kGMUserFileSystemDidMount, nullptr,
                     [this](const Notification&) { respondToBurnFSMounting(); });
  center.addObserver(this, kGMUserFileSystemDidUnmount, nullptr,
                     [this](const Notification&) { fuseDidUnmount(); });
  center.addObserver(this, kKelvaneFSSizeChanged, nullptr,
                     [this](const Notification&) { discSizeDidChange(); });
}

void KVController::respondToBurnFSMounting() {
  performLater([this] { performRespondToBurnFSMounting(); });
}

void KVController::performRespondToBurnFSMounting() {
  systemLog("Notified that Filesystem did mount.");
  setMediaIsMounted(true);
  window_.setHidden(HideableView::OpenButton, false);
  services_.sleep(kSettlingTime);
  probeVolume();
  if (UserDefaults::standard().boolForKey("autohide")) {
    window_.selectFile(paths::overlayMountPoint(), paths::volumesDirectory() + "/");
    window_.hideApplication();
  }
  makeUpForRefusedScan();
}

// Nobody tells a second time what happened to the drives while a disc was being opened.
void KVController::makeUpForRefusedScan() {
  if (std::exchange(scanWasRefused_, false)) scanForMedia();
}

// The disc that was to be opened is not in the drive any more; another one is.
void KVController::listDiscsAnew() {
  window_.setHeaderLine(localizedString("headerDisksAvail"));
  scanWasRefused_ = false;
  giveUpCurrentDevice();
  scanForMedia();
}

void KVController::mountFailed() {
  NotificationCenter::defaultCenter().removeObserver(this);
  releaseOverlay();
  mountHasFailed_ = true;
  removeOverlayAndHideList();
  if (DRDevice* device = currentDevice_) {
    services_.discWillBeEjected(device->bsdName());
    services_.volumes->letOthersMount(*device);  // Or the drive's button would have no effect.
  }
  makeUpForRefusedScan();
}

void KVController::showPerformMountFailedAlertAndReset(const std::string& detail) {
  Alert alert;
  alert.style = Alert::Style::Critical;
  alert.buttonKeys = {"OK"};
  alert.messageKey = "Unmountfailed";
  alert.informativeKey = "Unmountfailedlong";
  alert.detail = detail;
  alert.style = Alert::Style::Warning;
  window_.beginAlertSheet(alert, nullptr);
  window_.setHeaderLine(localizedString("headerDisksAvail"));
  // One that is still there would be opened again, and fail again.
  const bool isAnother =
      holdsAnotherDisc(*currentDeviceDictionary()) || !currentDevice()->mediaIsPresent();
  giveUpCurrentDevice();
  if (isAnother) {
    makeUpForRefusedScan();
  } else {
    scanWasRefused_ = false;
  }
}

bool KVController::closeVolume() {
  const std::shared_ptr<GMUserFileSystem> fileSystem = tarnwickFS();
  if (!fileSystem) return true;
  if (window_.isCopying()) {
    window_.beginAlertSheet(warningAlert("CopyRunning", {}), nullptr);
    return false;
  }
  const UnmountResult result = fileSystem->unmount();
  if (result == UnmountResult::Started || result == UnmountResult::NotMounted) return true;
  window_.beginAlertSheet(volumeStaysAlert(result, paths::overlayMountPoint()), nullptr);
  return false;
}

void KVController::fuseDidUnmount() {
  NotificationCenter::defaultCenter().removeObserver(this);
  // The counter is an unsigned number to those who burn: a deficit, which removals can leave, is a
  // huge one.
  sizetoburn_ = static_cast<double>(static_cast<uint64_t>(myBurnFSDelegate_->localusedbytes()));
  hideListIsWhole_ = myBurnFSDelegate_->hideListIsWhole();
  changes_ = myBurnFSDelegate_->changes();
  nominallyFree_ = myBurnFSDelegate_->spaceAtFirst();
  releaseOverlay();
  performLater([this] { concludeUnmount(); });
}

void KVController::releaseOverlay() {
  std::unique_ptr<BurnFSDelegate> delegate;
  std::shared_ptr<GMUserFileSystem> fileSystem;
  {
    const std::lock_guard lock(tarnwickFSMutex_);
    delegate.swap(myBurnFSDelegate_);
    fileSystem.swap(tarnwickFS_);
  }
  // The file system borrows the delegate, so it goes first.
  fileSystem.reset();
}

void KVController::concludeUnmount() {
  // The disc has gone in the meantime, and its clean-up has run.
  if (currentDevice_ == nullptr) return;
  std::error_code failure;
  const std::filesystem::directory_iterator entries(tmpDirPath_, failure);
  if (failure || entries == std::filesystem::directory_iterator()) {
    if (!hideListIsWhole_) showDeletionsLostAlert();
    if (hideListIsWhole_ && currentDevice_ != nullptr && volumeClosedToErase_ == tmpDirPath_) {
      eraseClosedDisc();
    } else {
      cleanupWithoutBurn();
    }
    return;
  }
  volumeClosedToErase_.clear();
  // The folder of the visible volume may have a longer name than a disc.
  window_.setBurnConfirmationDiskTitle(
      volumeIdentifierOf(currentDeviceDictionary()->description.volumename));
  isBurnInQuestion_ = true;
  window_.beginBurnConfirmationSheet();
  if (window_.showsBurnSummary() && currentDevice_ != nullptr) surveyBurn();
}

void KVController::showDeletionsLostAlert() {
  Alert alert;
  alert.buttonKeys = {"OK"};
  alert.messageKey = "CreateTrackAbortedWithError";
  alert.informativeKey = "CreateTrackAbortedWithErrorLong";
  alert.detail = reasonHideListNotWritten(paths::hideListFile(tmpDirPath_));
  systemLog("%@", alert.detail);
  window_.beginAlertSheet(alert, nullptr);
}

void KVController::respondToUnexpectedMediaEject() {
  systemLog("unexpected disk ejection. emergency of unmounting fuse without burning.");
  withdrawBurnQuestion();
  window_.endCopySheet();
  NotificationCenter& center = NotificationCenter::defaultCenter();
  center.removeObserver(this, kGMUserFileSystemDidMount, nullptr);
  center.removeObserver(this, kGMUserFileSystemDidUnmount, nullptr);
  const std::shared_ptr<GMUserFileSystem> fileSystem = tarnwickFS();
  if (fileSystem && fileSystem->unmount() != UnmountResult::Started) fileSystem->unmountLazily();
  if (fileSystem) fileSystem->waitUntilUnmounted(-1);
  releaseOverlay();
  window_.discHasGone();
  // A burn that was confirmed a moment ago has begun by then, and ends by itself.
  performLater([this] {
    if (!burnInProgress_) cleanupWithoutBurn();
  });
}

void KVController::discSizeDidChange() {
  updateMountedItemView();
}

bool KVController::volumeTakesFiles() const {
  return mediaIsMounted_ && !burnInProgress_ && tarnwickFS() != nullptr && !window_.isCopying();
}

void KVController::addFiles(const std::vector<std::string>& files) {
  if (!volumeTakesFiles()) {
    window_.beep();
    return;
  }
  window_.beginCopySheet({files, paths::overlayMountPoint(), paths::temporaryDirectory()});
}

void KVController::showDisk() {
  window_.selectFile(paths::overlayMountPoint(), paths::volumesDirectory() + "/");
}

}  // namespace kelvane

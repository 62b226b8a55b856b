// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_watcher.h"

#include <QCoreApplication>
#include <QFileSystemWatcher>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/foundation/main_thread.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive.h"
#include "platform/recording/drive_events.h"

namespace kelvane {
namespace {

// One change of a disc is several changes in its folder; they are looked at together.
constexpr std::chrono::milliseconds kSettlingTime{20};
constexpr std::chrono::milliseconds kPollInterval{2000};
constexpr char kRealDrives[] = "sr";

bool isEmulated(const DRDevice& device) {
  return device.emulatedDisc().has_value();
}

void tellOfShutTray(const std::string& name) {
  for (const DRDevice* device : DRDevice::devices()) {
    if (device->bsdName() != name) continue;
    DRNotificationCenter::currentRunLoopCenter().post(DRDeviceTrayKeptShutNotification, device);
  }
}

}  // namespace

DriveWatcher& DriveWatcher::shared() {
  static DriveWatcher watcher;
  return watcher;
}

DriveWatcher::DriveWatcher() = default;

DriveWatcher::~DriveWatcher() = default;

void DriveWatcher::start() {
  if (folders_ || QCoreApplication::instance() == nullptr) return;
  qAddPostRoutine([] { shared().stop(); });
  folders_ = std::make_unique<QFileSystemWatcher>();
  soon_ = std::make_unique<QTimer>();
  poll_ = std::make_unique<QTimer>();
  QObject::connect(folders_.get(), &QFileSystemWatcher::directoryChanged,
                   [this](const QString& folder) { folderHasChanged(folder.toStdString()); });
  soon_->setSingleShot(true);
  QObject::connect(soon_.get(), &QTimer::timeout, [this] { check(); });
  QObject::connect(poll_.get(), &QTimer::timeout, [this] { poll(); });
  events_ = DriveEvents::listen(
      DriveEvents::systemChannel(), kRealDrives,
      [this](const std::string& name) { checkSoon(name); }, tellOfShutTray);
  check();
}

void DriveWatcher::stop() {
  folders_.reset();
  soon_.reset();
  poll_.reset();
  events_.reset();
  watched_.clear();
  drivesWithNews_.clear();
}

bool DriveWatcher::isPolling() const {
  return poll_ && poll_->isActive();
}

void DriveWatcher::checkSoon() {
  for (const DRDevice* device : DRDevice::devices()) checkSoon(device->bsdName());
}

void DriveWatcher::checkSoon(const std::string& bsdName) {
  if (!soon_) return;
  drivesWithNews_.insert(bsdName);
  if (!soon_->isActive()) soon_->start(kSettlingTime);
}

void DriveWatcher::folderHasChanged(const std::string& folder) {
  for (const DRDevice* device : DRDevice::devices()) {
    if (device->emulatedDisc() == folder) checkSoon(device->bsdName());
  }
}

DriveWatcher::Observation DriveWatcher::observe(const DRDevice& device) {
  Observation observation;
  observation.valid = device.isValid();
  observation.busy = device.mediaIsBusy();
  observation.settled = isEmulated(device) || DriveEvents::isSettled(device.bsdName());
  if (const Drive* drive = device.drive()) {
    observation.trayOpenings = drive->trayOpenings();
    // Whoever writes to the disc is not to be disturbed by questions.
    if (observation.valid && !observation.busy) {
      observation.media = drive->mediaState();
      if (drive->statusIsMissing()) static_cast<void>(drive->status());
    }
    observation.statusIsMissing = drive->statusIsMissing();
  }
  return observation;
}

void DriveWatcher::check() {
  const std::set<std::string> named = std::exchange(drivesWithNews_, {});
  watchFolders();
  for (const DRDevice* device : DRDevice::devices()) {
    const auto known = watched_.find(device);
    const bool isKnown = known != watched_.end();
    if (isKnown && !named.contains(device->bsdName())) continue;
    const Observation now = observe(*device);
    if (isKnown && known->second.observation == now) continue;
    watched_[device].observation = now;
    DRNotificationCenter::currentRunLoopCenter().post(DRDeviceStatusChangedNotification, device);
  }
  // Behind the notifications: who hears of a drive asks it what is on the disc.
  performOnMainThread([this] { noteMissingStatus(); });
  pollWhileNeeded();
}

void DriveWatcher::noteMissingStatus() {
  if (!folders_) return;
  for (auto& [device, known] : watched_) {
    const Drive* drive = device->drive();
    known.observation.statusIsMissing = drive != nullptr && drive->statusIsMissing();
  }
  pollWhileNeeded();
}

// The watch of a folder ends with the folder; one that has come back is watched anew.
void DriveWatcher::watchFolders() {
  for (const DRDevice* device : DRDevice::devices()) {
    if (!isEmulated(*device) || !device->isValid()) continue;
    const QString folder = QString::fromStdString(*device->emulatedDisc());
    if (!folders_->directories().contains(folder)) folders_->addPath(folder);
  }
}

// The end of a recording by another program and of a disc's loading, the return of a folder, a
// drive that can be asked again: nobody tells of these.
bool DriveWatcher::needsPoll(const DRDevice& device) const {
  const bool mediaAreToldOf = isEmulated(device) || (events_ && events_->tellsOfMedia());
  const auto known = watched_.find(&device);
  return !mediaAreToldOf || known == watched_.end() || known->second.observation.busy ||
         known->second.observation.media.transitioning ||
         known->second.observation.statusIsMissing || !known->second.observation.valid;
}

void DriveWatcher::pollWhileNeeded() {
  const std::vector<DRDevice*> devices = DRDevice::devices();
  const bool needed =
      !events_ || std::any_of(devices.begin(), devices.end(),
                              [this](const DRDevice* device) { return needsPoll(*device); });
  if (!needed) {
    poll_->stop();
  } else if (!poll_->isActive()) {
    poll_->start(kPollInterval);
  }
}

// Looks closer only where something may have happened that no folder tells of.
void DriveWatcher::poll() {
  for (const DRDevice* device : DRDevice::devices()) {
    const auto known = watched_.find(device);
    const bool changing = known == watched_.end() || known->second.observation.busy ||
                          known->second.observation.media.transitioning ||
                          known->second.observation.statusIsMissing ||
                          known->second.observation.valid != device->isValid();
    // What the drive has told once it does not tell again; where the kernel asks it, it is the
    // kernel that has to hear of it.
    const bool moved =
        !isEmulated(*device) && !(events_ && events_->tellsOfMedia()) && trayHasMoved(*device);
    if (changing || moved) drivesWithNews_.insert(device->bsdName());
  }
  if (!drivesWithNews_.empty()) check();
}

bool DriveWatcher::trayHasMoved(const DRDevice& device) {
  Drive* drive = device.drive();
  if (drive == nullptr || device.mediaIsBusy()) return false;
  const auto now = drive->mediaEvent();
  if (!now) return false;
  std::optional<mmc::MediaEventStatus>& before = watched_[&device].tray;
  const bool moved = now->event != mmc::MediaEvent::None || !before ||
                     before->trayOpen != now->trayOpen || before->mediaPresent != now->mediaPresent;
  before = now;
  return moved;
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_watcher.h"

#include <QCoreApplication>
#include <QFileSystemWatcher>
#include <QTimer>
#include <algorithm>
#include <chrono>

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
  QObject::connect(folders_.get(), &QFileSystemWatcher::directoryChanged, [this] { checkSoon(); });
  soon_->setSingleShot(true);
  QObject::connect(soon_.get(), &QTimer::timeout, [this] { check(); });
  QObject::connect(poll_.get(), &QTimer::timeout, [this] { poll(); });
  events_ = DriveEvents::listen(
      DriveEvents::systemChannel(), kRealDrives, [this] { checkSoon(); }, tellOfShutTray);
  check();
}

void DriveWatcher::stop() {
  folders_.reset();
  soon_.reset();
  poll_.reset();
  events_.reset();
  watched_.clear();
}

bool DriveWatcher::isPolling() const {
  return poll_ && poll_->isActive();
}

void DriveWatcher::checkSoon() {
  if (soon_ && !soon_->isActive()) soon_->start(kSettlingTime);
}

DriveWatcher::Observation DriveWatcher::observe(const DRDevice& device) {
  Observation observation;
  observation.valid = device.isValid();
  observation.busy = device.mediaIsBusy();
  observation.settled = isEmulated(device) || DriveEvents::isSettled(device.bsdName());
  if (const Drive* drive = device.drive()) {
    observation.trayOpenings = drive->trayOpenings();
    // Whoever writes to the disc is not to be disturbed by questions.
    if (observation.valid && !observation.busy) observation.media = drive->mediaState();
  }
  return observation;
}

void DriveWatcher::check() {
  watchFolders();
  for (const DRDevice* device : DRDevice::devices()) {
    const Observation now = observe(*device);
    const auto known = watched_.find(device);
    if (known != watched_.end() && known->second.observation == now) continue;
    watched_[device].observation = now;
    DRNotificationCenter::currentRunLoopCenter().post(DRDeviceStatusChangedNotification, device);
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

// The end of a recording by another program and of a disc's loading, the return of a folder: nobody
// tells of these.
bool DriveWatcher::needsPoll(const DRDevice& device) const {
  const bool mediaAreToldOf = isEmulated(device) || (events_ && events_->tellsOfMedia());
  const auto known = watched_.find(&device);
  return !mediaAreToldOf || known == watched_.end() || known->second.observation.busy ||
         known->second.observation.media.transitioning || !known->second.observation.valid;
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
  bool worthALook = false;
  for (const DRDevice* device : DRDevice::devices()) {
    const auto known = watched_.find(device);
    const bool changing = known == watched_.end() || known->second.observation.busy ||
                          known->second.observation.media.transitioning ||
                          known->second.observation.valid != device->isValid();
    // What the drive has told once it does not tell again; where the kernel asks it, it is the
    // kernel that has to hear of it.
    const bool moved =
        !isEmulated(*device) && !(events_ && events_->tellsOfMedia()) && trayHasMoved(*device);
    worthALook = worthALook || changing || moved;
  }
  if (worthALook) check();
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

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_watcher.h"

#include <QCoreApplication>
#include <QFileSystemWatcher>
#include <QTimer>
#include <chrono>

#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive.h"

namespace kelvane {
namespace {

// One change of a disc is several changes in its folder; they are looked at together.
constexpr std::chrono::milliseconds kSettlingTime{20};
constexpr std::chrono::milliseconds kPollInterval{2000};

bool isEmulated(const DRDevice& device) {
  return device.emulatedDisc().has_value();
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
  poll_->start(kPollInterval);
  check();
}

void DriveWatcher::stop() {
  folders_.reset();
  soon_.reset();
  poll_.reset();
  watched_.clear();
}

void DriveWatcher::checkSoon() {
  if (soon_ && !soon_->isActive()) soon_->start(kSettlingTime);
}

DriveWatcher::Observation DriveWatcher::observe(const DRDevice& device) {
  Observation observation;
  observation.valid = device.isValid();
  observation.busy = device.mediaIsBusy();
  if (const Drive* drive = device.drive()) {
    observation.trayOpenings = drive->trayOpenings();
    if (observation.valid) observation.media = drive->mediaState();
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
}

// The watch of a folder ends with the folder; one that has come back is watched anew.
void DriveWatcher::watchFolders() {
  for (const DRDevice* device : DRDevice::devices()) {
    if (!isEmulated(*device) || !device->isValid()) continue;
    const QString folder = QString::fromStdString(*device->emulatedDisc());
    if (!folders_->directories().contains(folder)) folders_->addPath(folder);
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
    const bool moved = !isEmulated(*device) && trayHasMoved(*device);
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

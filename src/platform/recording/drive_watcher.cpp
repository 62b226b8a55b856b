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
  poll_->setSingleShot(true);  // So that time is left for others between two looks.
  QObject::connect(soon_.get(), &QTimer::timeout, [this] { checkNews(); });
  QObject::connect(poll_.get(), &QTimer::timeout, [this] { poll(); });
  events_ = DriveEvents::listen(
      DriveEvents::systemChannel(), kRealDrives,
      [this](const std::string& name) { name.empty() ? checkSoon() : checkSoon(name); },
      tellOfShutTray);
  checkNews();
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

void DriveWatcher::takeNoticeSoon() {
  performOnMainThread([this] {
    if (soon_ && !soon_->isActive()) soon_->start(kSettlingTime);
  });
}

DriveWatcher::Observation DriveWatcher::observe(const DRDevice& device, const MediaState& media) {
  Observation observation;
  observation.valid = device.isValid();
  observation.busy = device.mediaIsBusy();
  observation.settled = isEmulated(device) || DriveEvents::isSettled(device.bsdName());
  if (const Drive* drive = device.drive()) observation.trayOpenings = drive->trayOpenings();
  if (observation.valid && !observation.busy) observation.media = media;
  return observation;
}

/// Asks the drive, and gives whether it tells now what it could not be asked for before.
bool DriveWatcher::answersAtLast(const Drive& drive) {
  const bool before = drive.isWorthAnotherQuestion();
  static_cast<void>(drive.mediaState());
  if (drive.isWorthAnotherQuestion()) static_cast<void>(drive.status());
  return before && !drive.isWorthAnotherQuestion();
}

// Whether there is something to tell. Whoever writes to the disc is not to be disturbed by
// questions.
bool DriveWatcher::look(const DRDevice& device, Watched& known) {
  const Drive* drive = device.drive();
  const bool mayBeAsked = drive != nullptr && device.isValid() && !device.mediaIsBusy();
  const bool isAnswered = mayBeAsked && answersAtLast(*drive);
  const bool isInVain = drive != nullptr && drive->isWorthAnotherQuestion();
  known.looksInVain = isInVain ? known.looksInVain + 1 : 0;
  const Observation now =
      observe(device, drive == nullptr ? MediaState() : drive->knownMediaState());
  return std::exchange(known.observation, now) != now || isAnswered;
}

// Of drives that are not worth a question it is noted what others have found out.
void DriveWatcher::check(const Names& worthAQuestion) {
  watchFolders();
  for (const DRDevice* device : DRDevice::devices()) {
    const bool isNew = !watched_.contains(device);
    Watched& known = watched_[device];
    bool isChanged = isNew;
    if (isNew || worthAQuestion.contains(device->bsdName())) {
      isChanged = look(*device, known) || isNew;
    } else if (const Drive* drive = device->drive()) {
      const Observation now = observe(*device, drive->knownMediaState());
      isChanged = std::exchange(known.observation, now) != now;
    }
    if (isChanged) {
      DRNotificationCenter::currentRunLoopCenter().post(DRDeviceStatusChangedNotification, device);
    }
  }
  pollWhileNeeded();
}

void DriveWatcher::checkNews() {
  const Names named = std::exchange(drivesWithNews_, {});
  for (auto& [device, known] : watched_) {
    if (named.contains(device->bsdName())) known.looksInVain = 0;
  }
  check(named);
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
// tells of these. A drive that cannot be asked is asked some more times; each may take its time.
bool DriveWatcher::isInFlux(const DRDevice& device) const {
  constexpr int kMostLooksInVain = 3;
  const auto known = watched_.find(&device);
  if (known == watched_.end()) return true;
  const Drive* drive = device.drive();
  const bool isWorthALook = drive != nullptr && drive->isWorthAnotherQuestion() &&
                            known->second.looksInVain < kMostLooksInVain;
  const Observation& observation = known->second.observation;
  return isWorthALook || observation.busy || observation.media.transitioning;
}

bool DriveWatcher::needsPoll(const DRDevice& device) const {
  const bool mediaAreToldOf = isEmulated(device) || (events_ && events_->tellsOfMedia());
  return !mediaAreToldOf || isInFlux(device) || !watched_.at(&device).observation.valid;
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

// Asks only where something may have happened that nobody tells of.
void DriveWatcher::poll() {
  Names worthAQuestion;
  for (const DRDevice* device : DRDevice::devices()) {
    const auto known = watched_.find(device);
    const bool changing = isInFlux(*device) || known->second.observation.valid != device->isValid();
    // What the drive has told once it does not tell again; where the kernel asks it, it is the
    // kernel that has to hear of it.
    const bool moved =
        !isEmulated(*device) && !(events_ && events_->tellsOfMedia()) && trayHasMoved(*device);
    if (changing || moved) worthAQuestion.insert(device->bsdName());
  }
  check(worthAQuestion);
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

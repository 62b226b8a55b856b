// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/mounted_volume.h"

#include <any>
#include <chrono>
#include <utility>

#include "platform/foundation/notification_center.h"
#include "platform/foundation/paths.h"

namespace kelvane::tests {
namespace {

constexpr std::chrono::seconds kLongEnough{60};

}  // namespace

MountedVolume::MountedVolume(const OverlayTrees& trees, OverlayInfo info, bool hasDisc)
    : path_(paths::overlayMountPoint()),
      delegate_(std::make_unique<BurnFSDelegate>(
          trees.overlay(), hasDisc ? std::optional(trees.disc()) : std::nullopt, info)),
      fileSystem_(std::make_unique<GMUserFileSystem>(delegate_.get(), false)) {
  observe();
  fileSystem_->mountAtPath(path_, {"volname=Holiday, 2024", "volicon=/icons/disc.png", "local",
                                   "-f", "negative_vncache"});
}

MountedVolume::~MountedVolume() {
  fileSystem_.reset();
  NotificationCenter::defaultCenter().removeObserver(this);
}

void MountedVolume::observe() {
  const auto become = [this](State state, std::string why) {
    const std::lock_guard lock(mutex_);
    state_ = state;
    failure_ = std::move(why);
    changed_.notify_all();
  };
  auto& centre = NotificationCenter::defaultCenter();
  const void* const sender = fileSystem_.get();
  centre.addObserver(this, kGMUserFileSystemDidMount, sender,
                     [become](const Notification&) { become(State::Mounted, {}); });
  centre.addObserver(this, kGMUserFileSystemMountFailed, sender,
                     [become](const Notification& notification) {
                       become(State::Failed, std::any_cast<std::string>(notification.userInfo));
                     });
  centre.addObserver(this, kGMUserFileSystemDidUnmount, sender,
                     [this, become](const Notification&) {
                       ++unmountCount_;
                       become(State::Gone, {});
                     });
}

bool MountedVolume::waitFor(State first, State second) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, kLongEnough, [&] { return state_ == first || state_ == second; });
  return state_ == first;
}

bool MountedVolume::waitUntilMounted() {
  return waitFor(State::Mounted, State::Failed);
}

std::string MountedVolume::failure() {
  const std::lock_guard lock(mutex_);
  return failure_;
}

bool MountedVolume::waitForDidUnmount() {
  return waitFor(State::Gone, State::Gone);
}

bool MountedVolume::unmountAndWait() {
  return fileSystem_->unmount() == UnmountResult::Started && waitForDidUnmount();
}

void MountedOverlay::SetUp() {
  std::string reason;
  if (!GMUserFileSystem::isAvailable(&reason)) GTEST_SKIP() << reason;
}

void MountedOverlay::mount(OverlayInfo info) {
  trees.sealDisc();
  volume = std::make_unique<MountedVolume>(trees, info);
  ASSERT_TRUE(volume->waitUntilMounted()) << volume->failure();
}

std::string MountedOverlay::sh(const std::string& command) const {
  const CommandResult result = runShell("cd '" + volume->path() + "' && { " + command + "\n}");
  EXPECT_EQ(result.status, 0) << command << "\n" << result.output;
  return result.output;
}

std::string MountedOverlay::shFails(const std::string& command) const {
  const CommandResult result = runShell("cd '" + volume->path() + "' && { " + command + "\n}");
  EXPECT_NE(result.status, 0) << command << "\n" << result.output;
  return result.output;
}

}  // namespace kelvane::tests

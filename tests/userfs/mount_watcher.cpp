// SPDX-License-Identifier: GPL-2.0-or-later
#include "userfs/mount_watcher.h"

#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "platform/foundation/notification_center.h"
#include "platform/userfs/gm_user_file_system.h"

namespace kelvane::tests {
namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kLongEnough{60};

}  // namespace

MountWatcher::MountWatcher(const void* sender) {
  for (const char* name :
       {kGMUserFileSystemDidMount, kGMUserFileSystemDidUnmount, kGMUserFileSystemMountFailed}) {
    NotificationCenter::defaultCenter().addObserver(
        this, name, sender, [this](const Notification& notification) {
          Event event{notification.name, {}, std::this_thread::get_id()};
          if (const auto* reason = std::any_cast<std::string>(&notification.userInfo)) {
            event.reason = *reason;
          }
          if (onEvent) onEvent(event);
          const std::lock_guard lock(mutex_);
          events_.push_back(event);
          changed_.notify_all();
        });
  }
}

MountWatcher::~MountWatcher() {
  NotificationCenter::defaultCenter().removeObserver(this);
}

bool MountWatcher::waitFor(const std::string& name) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kLongEnough, [&] {
    return std::any_of(events_.begin(), events_.end(),
                       [&](const Event& event) { return event.name == name; });
  });
}

std::vector<MountWatcher::Event> MountWatcher::events() {
  const std::lock_guard lock(mutex_);
  return events_;
}

std::vector<std::string> MountWatcher::names() {
  std::vector<std::string> result;
  for (const Event& event : events()) result.push_back(event.name);
  return result;
}

TemporaryFolder::TemporaryFolder() {
  path_ = (fs::temp_directory_path() / "kelvane-userfs-XXXXXX").string();
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code failure;
  fs::remove_all(path_, failure);
}

bool isMounted(const std::string& path) {
  std::ifstream mounts("/proc/self/mounts");
  for (std::string line; std::getline(mounts, line);) {
    if (line.find(" " + path + " ") != std::string::npos) return true;
  }
  return false;
}

}  // namespace kelvane::tests

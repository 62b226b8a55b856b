// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kelvane::tests {

/// Records the mount notifications of one sender and waits for them.
class MountWatcher {
 public:
  struct Event {
    std::string name;
    std::string reason;
    std::thread::id thread;
  };

  explicit MountWatcher(const void* sender);
  ~MountWatcher();
  MountWatcher(const MountWatcher&) = delete;
  MountWatcher& operator=(const MountWatcher&) = delete;

  /// Called on the posting thread, before the event is recorded.
  std::function<void(const Event&)> onEvent;

  /// False where that notification does not come.
  bool waitFor(const std::string& name);
  std::vector<Event> events();
  std::vector<std::string> names();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Event> events_;
};

/// A folder for mount points, removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

/// Whether something is mounted at the path.
bool isMounted(const std::string& path);

}  // namespace kelvane::tests

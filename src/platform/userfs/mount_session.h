// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/userfs/mount_options.h"
#include "platform/userfs/volume.h"

namespace kelvane::userfs {

/// One mounted volume from the mount to its end, on the thread that runs it. Another thread may
/// only call `stop`.
class MountSession {
 public:
  /// Null where the mount fails; `reason` then says why in one sentence.
  static std::unique_ptr<MountSession> mount(Volume* volume, const MountOptions& options,
                                             const std::string& mountPoint, std::string* reason);

  /// Unmounts what is still mounted, by force.
  ~MountSession();
  MountSession(const MountSession&) = delete;
  MountSession& operator=(const MountSession&) = delete;

  /// Answers requests until the volume is unmounted or `stop` is called. Calls `whenReady` once,
  /// when the volume answers.
  void serve(const std::function<void()>& whenReady);

  /// Lets `serve` return although the volume is mounted. Any thread.
  void stop();

 private:
  MountSession(Volume* volume, std::string mountPoint);
  bool waitForRequest() const;
  int receive();
  bool serveOne();

  Volume* volume_;
  std::string mountPoint_;
  fuse_session* session_ = nullptr;
  bool isMounted_ = false;
  int stopSignal_ = -1;  // An eventfd; readable once `serve` has to return.
  std::atomic<bool> isStopping_ = false;
  std::chrono::microseconds attention_;
  fuse_buf request_ = {};
};

}  // namespace kelvane::userfs

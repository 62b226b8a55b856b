// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/gm_user_file_system.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <mutex>
#include <thread>

#include "platform/foundation/notification_center.h"
#include "platform/foundation/placeholders.h"
#include "platform/userfs/fuse_device.h"
#include "platform/userfs/mount_options.h"
#include "platform/userfs/mount_point.h"
#include "platform/userfs/mount_session.h"
#include "platform/userfs/volume.h"

namespace kelvane {
namespace {

// Signals belong to the application's own threads.
void blockAllSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace

/// The part that the thread shares, so that the object may be deleted on that very thread.
class GMUserFileSystem::Impl {
 public:
  enum class State { Idle, Mounting, Mounted, Ending, Ended };

  Impl(GMUserFileSystemDelegate* delegate, const void* object)
      : delegate_(delegate), object_(object) {}

  void start(const std::shared_ptr<Impl>& self, const std::string& path,
             const std::vector<std::string>& options);
  UnmountResult unmount(userfs::UnmountMode mode);
  bool waitUntilEnded(int milliseconds);
  void abandon();

 private:
  void run(const std::string& path, const std::vector<std::string>& options);
  bool mountAndServe(const std::string& path, const std::vector<std::string>& options,
                     std::string* reason);
  void setState(State state);
  void post(const char* name, std::any userInfo = {});
  bool isOwnThread() const { return thread_.get_id() == std::this_thread::get_id(); }

  GMUserFileSystemDelegate* const delegate_;
  const void* const object_;  // The sender of the notifications; not used otherwise.
  std::string path_;          // Set before the thread starts.
  std::thread thread_;
  std::mutex mutex_;  // Guards what follows; never held while the kernel or an observer is called.
  std::condition_variable changed_;
  State state_ = State::Idle;
  userfs::MountSession* session_ = nullptr;  // While it serves.
  bool isSilent_ = false;                    // The object is being deleted.
};

void GMUserFileSystem::Impl::start(const std::shared_ptr<Impl>& self, const std::string& path,
                                   const std::vector<std::string>& options) {
  const std::lock_guard lock(mutex_);
  if (state_ != State::Idle) return;
  state_ = State::Mounting;
  path_ = path;
  thread_ = std::thread([self, path, options] { self->run(path, options); });
}

void GMUserFileSystem::Impl::run(const std::string& path, const std::vector<std::string>& options) {
  blockAllSignals();
  {
    const std::lock_guard lock(mutex_);  // `start` has stored the thread once it lets go of this.
  }
  std::string reason;
  if (mountAndServe(path, options, &reason)) {
    post(kGMUserFileSystemDidUnmount);
  } else {
    post(kGMUserFileSystemMountFailed, reason);
  }
  setState(State::Ended);
}

// True once a volume that was mounted has gone.
bool GMUserFileSystem::Impl::mountAndServe(const std::string& path,
                                           const std::vector<std::string>& options,
                                           std::string* reason) {
  if (!isAvailable(reason)) return false;
  const auto mountPoint = userfs::MountPoint::prepare(path, reason);
  if (!mountPoint.has_value()) return false;
  const userfs::MountOptions parsed = userfs::parseMountOptions(options);
  userfs::Volume volume(delegate_, parsed, userfs::KernelCaches::NameInvalidation::BestAvailable);
  const auto session = userfs::MountSession::mount(&volume, parsed, path, reason);
  if (session == nullptr) return false;
  {
    const std::lock_guard lock(mutex_);
    session_ = session.get();
  }
  session->serve([this] {
    setState(State::Mounted);
    post(kGMUserFileSystemDidMount);
  });
  {
    const std::lock_guard lock(mutex_);
    session_ = nullptr;
    state_ = State::Ending;
  }
  volume.releaseEverything();
  delegate_->willUnmount();
  return true;
}

void GMUserFileSystem::Impl::setState(State state) {
  const std::lock_guard lock(mutex_);
  state_ = state;
  changed_.notify_all();
}

void GMUserFileSystem::Impl::post(const char* name, std::any userInfo) {
  {
    const std::lock_guard lock(mutex_);
    if (isSilent_) return;
  }
  NotificationCenter::defaultCenter().post(name, object_, std::move(userInfo));
}

UnmountResult GMUserFileSystem::Impl::unmount(userfs::UnmountMode mode) {
  std::unique_lock lock(mutex_);
  if (!isOwnThread()) {
    changed_.wait(lock, [this] { return state_ != State::Mounting; });
  }
  if (state_ == State::Idle || state_ == State::Ended) return UnmountResult::NotMounted;
  // Somebody else may mount at the same path by now.
  if (state_ == State::Ending) return UnmountResult::Started;
  if (mode == userfs::UnmountMode::Lazily) {
    // The end of the session takes the mount away and cuts off whoever uses it.
    if (session_ != nullptr) session_->stop();
    return UnmountResult::Started;
  }
  lock.unlock();
  return userfs::unmountPath(path_, mode);
}

bool GMUserFileSystem::Impl::waitUntilEnded(int milliseconds) {
  std::unique_lock lock(mutex_);
  const auto hasEnded = [this] { return state_ == State::Idle || state_ == State::Ended; };
  if (milliseconds < 0) {
    changed_.wait(lock, hasEnded);
    return true;
  }
  return changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), hasEnded);
}

// The object goes: so does the volume, and nobody is told.
void GMUserFileSystem::Impl::abandon() {
  if (!thread_.joinable()) return;
  if (isOwnThread()) {
    thread_.detach();
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    isSilent_ = true;
  }
  if (unmount(userfs::UnmountMode::IfNotBusy) != UnmountResult::Started) {
    unmount(userfs::UnmountMode::Lazily);
  }
  thread_.join();
}

GMUserFileSystem::GMUserFileSystem(GMUserFileSystemDelegate* delegate, bool /*isThreadSafe*/)
    : impl_(std::make_shared<Impl>(delegate, this)) {}

GMUserFileSystem::~GMUserFileSystem() {
  impl_->abandon();
}

bool GMUserFileSystem::isAvailable(std::string* reason) {
  std::string missing = userfs::whyFuseDeviceIsUnusable();
  if (missing.empty() && geteuid() != 0 && userfs::mountHelperPath().empty()) {
    missing =
        "The program fusermount3, which mounts for ordinary users, is not installed. It comes with "
        "the package fuse3.";
  }
  if (reason != nullptr && !missing.empty()) *reason = missing;
  return missing.empty();
}

void GMUserFileSystem::mountAtPath(const std::string& path,
                                   const std::vector<std::string>& options) {
  impl_->start(impl_, path, options);
}

// The object may be deleted by an observer while these still run: the shared part must outlive
// them.

UnmountResult GMUserFileSystem::unmount() {
  const std::shared_ptr<Impl> shared = impl_;
  return shared->unmount(userfs::UnmountMode::IfNotBusy);
}

UnmountResult GMUserFileSystem::unmountLazily() {
  const std::shared_ptr<Impl> shared = impl_;
  return shared->unmount(userfs::UnmountMode::Lazily);
}

bool GMUserFileSystem::waitUntilUnmounted(int milliseconds) {
  const std::shared_ptr<Impl> shared = impl_;
  return shared->waitUntilEnded(milliseconds);
}

}  // namespace kelvane

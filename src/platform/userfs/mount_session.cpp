// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/mount_session.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

#include "platform/foundation/placeholders.h"
#include "platform/userfs/fuse_log_capture.h"
#include "platform/userfs/mount_point.h"

namespace kelvane::userfs {
namespace {

// How long to look for a next request before going to sleep. On a single processor that would only
// keep away the program that makes it.
std::chrono::microseconds attention() {
  constexpr std::chrono::microseconds kAttention{50};
  return std::thread::hardware_concurrency() > 1 ? kAttention : std::chrono::microseconds::zero();
}

// An argument list in the form that libfuse takes apart.
class ArgumentList {
 public:
  explicit ArgumentList(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) fuse_opt_add_arg(&list_, argument.c_str());
  }
  ~ArgumentList() { fuse_opt_free_args(&list_); }
  ArgumentList(const ArgumentList&) = delete;
  ArgumentList& operator=(const ArgumentList&) = delete;

  fuse_args* get() { return &list_; }

 private:
  fuse_args list_ = FUSE_ARGS_INIT(0, nullptr);
};

std::string reasonOf(int code, const FuseLogCapture& log) {
  const std::string text = log.text();
  return text.empty() ? format("The volume cannot be mounted: %@.", std::strerror(code))
                      : format("The volume cannot be mounted: %@", text);
}

}  // namespace

MountSession::MountSession(Volume* volume, std::string mountPoint)
    : volume_(volume),
      mountPoint_(std::move(mountPoint)),
      stopSignal_(eventfd(0, EFD_CLOEXEC)),
      attention_(attention()) {}

std::unique_ptr<MountSession> MountSession::mount(Volume* volume, const MountOptions& options,
                                                  const std::string& mountPoint,
                                                  std::string* reason) {
  const FuseLogCapture log;
  ArgumentList arguments(libfuseArguments(options));
  std::unique_ptr<MountSession> mounted(new MountSession(volume, mountPoint));
  errno = 0;
  mounted->session_ =
      fuse_session_new(arguments.get(), &Volume::operations(), sizeof(fuse_lowlevel_ops), volume);
  if (mounted->session_ == nullptr || mounted->stopSignal_ < 0) {
    *reason = reasonOf(errno, log);
    return nullptr;
  }
  if (fuse_session_mount(mounted->session_, mountPoint.c_str()) != 0) {
    *reason = reasonOf(errno, log);
    return nullptr;
  }
  mounted->isMounted_ = true;
  const int descriptor = fuse_session_fd(mounted->session_);
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
  volume->caches().start(mounted->session_);
  return mounted;
}

MountSession::~MountSession() {
  volume_->caches().stop();
  if (isMounted_) fuse_session_unmount(session_);
  if (session_ != nullptr) fuse_session_destroy(session_);
  // Where the connection was cut from outside, the mount is still there and answers nothing.
  if (isMounted_) removeDeadMount(mountPoint_);
  std::free(request_.mem);
  if (stopSignal_ >= 0) close(stopSignal_);
}

void MountSession::serve(const std::function<void()>& whenReady) {
  while (!volume_->isInitialised()) {
    if (!serveOne()) return;
  }
  whenReady();
  while (serveOne()) {
  }
}

void MountSession::stop() {
  isStopping_ = true;
  const uint64_t one = 1;
  while (write(stopSignal_, &one, sizeof(one)) < 0 && errno == EINTR) {
  }
}

// False where there will be no further request.
bool MountSession::waitForRequest() const {
  pollfd waiting[2] = {{fuse_session_fd(session_), POLLIN, 0}, {stopSignal_, POLLIN, 0}};
  while (poll(waiting, 2, -1) < 0) {
    if (errno != EINTR) return false;
  }
  return waiting[1].revents == 0;
}

// The next request's length, 0 or less where there is none. A program mostly asks for one thing
// after the other: to look for the next request a few times costs less than to be woken up for it.
int MountSession::receive() {
  const auto start = std::chrono::steady_clock::now();
  do {
    const int length = fuse_session_receive_buf(session_, &request_);
    if (length != -EAGAIN || isStopping_) return length;
  } while (std::chrono::steady_clock::now() - start < attention_);
  return waitForRequest() ? fuse_session_receive_buf(session_, &request_) : 0;
}

bool MountSession::serveOne() {
  const int length = receive();
  if (isStopping_) return false;
  if (length == -EINTR || length == -EAGAIN) return true;
  if (length <= 0) return false;
  errno = 0;  // From here on it tells what fails below (see failureBelow).
  fuse_session_process_buf(session_, &request_);
  return fuse_session_exited(session_) == 0;
}

}  // namespace kelvane::userfs

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/mount_session.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "platform/foundation/placeholders.h"
#include "platform/userfs/fuse_log_capture.h"
#include "platform/userfs/mount_point.h"

namespace kelvane::userfs {
namespace {

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
    : volume_(volume), mountPoint_(std::move(mountPoint)), stopSignal_(eventfd(0, EFD_CLOEXEC)) {}

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

bool MountSession::serveOne() {
  if (!waitForRequest()) return false;
  const int length = fuse_session_receive_buf(session_, &request_);
  if (length == -EINTR || length == -EAGAIN) return true;
  if (length <= 0) return false;
  errno = 0;  // From here on it tells what fails below (see failureBelow).
  fuse_session_process_buf(session_, &request_);
  return fuse_session_exited(session_) == 0;
}

}  // namespace kelvane::userfs

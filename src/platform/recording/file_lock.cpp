// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <thread>
#include <utility>

namespace kelvane {
namespace {

// Without O_NONBLOCK a device node would wait for its disc.
int openForLocking(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

}  // namespace

std::optional<FileLock> FileLock::acquire(const std::string& path,
                                          std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds kPause{20};
  FileLock lock(openForLocking(path));
  if (lock.descriptor_ < 0) return std::nullopt;
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (flock(lock.descriptor_, LOCK_EX | LOCK_NB) != 0) {
    if (std::chrono::steady_clock::now() >= deadline) return std::nullopt;
    std::this_thread::sleep_for(kPause);
  }
  return lock;
}

bool FileLock::isHeld(const std::string& path) {
  const int descriptor = openForLocking(path);
  if (descriptor < 0) return false;
  const bool held = flock(descriptor, LOCK_SH | LOCK_NB) != 0;
  close(descriptor);
  return held;
}

FileLock::FileLock(FileLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace kelvane

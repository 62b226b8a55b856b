// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/kernel_caches.h"

#define FUSE_USE_VERSION 314
#include <fuse_lowlevel.h>
#include <unistd.h>

namespace kelvane::userfs {
namespace {

// FUSE_NOTIFY_INC_EPOCH of protocol 7.44, which our libfuse does not know yet. All names that the
// kernel learned before are looked up again. (linux/fuse.h)
constexpr int32_t kIncreaseEpoch = 8;

// struct fuse_out_header of a notification.
struct NotificationHeader {
  uint32_t length;
  int32_t code;
  uint64_t unique;
};

}  // namespace

KernelCaches::KernelCaches(NameInvalidation nameInvalidation)
    : kernelCountsEpochs_(nameInvalidation == NameInvalidation::BestAvailable) {}

KernelCaches::~KernelCaches() {
  stop();
}

void KernelCaches::start(fuse_session* session) {
  session_ = session;
}

void KernelCaches::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    queue_.clear();
  }
  changed_.notify_all();
  if (worker_.joinable()) worker_.join();
  session_ = nullptr;
}

void KernelCaches::forgetAttributes(uint64_t node) {
  constexpr off_t kAttributesOnly = -1;
  if (session_ != nullptr) fuse_lowlevel_notify_inval_inode(session_, node, kAttributesOnly, 0);
}

void KernelCaches::forgetListing(uint64_t directory) {
  if (session_ != nullptr) fuse_lowlevel_notify_inval_inode(session_, directory, 0, 0);
}

void KernelCaches::forgetNamesBelow(uint64_t parent, const std::string& name) {
  if (session_ == nullptr) return;
  if (kernelCountsEpochs_) {
    if (increaseEpoch()) return;
    kernelCountsEpochs_ = false;
  }
  {
    const std::lock_guard lock(mutex_);
    queue_.push_back({parent, name});
    if (!worker_.joinable()) worker_ = std::thread([this] { invalidateQueuedNames(); });
  }
  changed_.notify_all();
}

bool KernelCaches::increaseEpoch() {
  const NotificationHeader header{sizeof(NotificationHeader), kIncreaseEpoch, 0};
  return write(fuse_session_fd(session_), &header, sizeof(header)) == sizeof(header);
}

void KernelCaches::invalidateQueuedNames() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    if (stopping_) return;
    const Name name = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    fuse_lowlevel_notify_inval_entry(session_, name.parent, name.name.c_str(), name.name.size());
    lock.lock();
  }
}

}  // namespace kelvane::userfs

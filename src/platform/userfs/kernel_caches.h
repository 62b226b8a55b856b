// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

struct fuse_session;

namespace kelvane::userfs {

/// Tells the kernel which of its memories of the volume no longer hold.
///
/// The kernel keeps names, attributes, listings and pages for a day, since all changes come through
/// it. It follows what a request names by itself; told it must be what changes elsewhere.
class KernelCaches {
 public:
  /// Seconds that answers stay valid.
  static constexpr double kLifetime = 86400;

  /// How names are invalidated: as the kernel allows, or (for tests) as an old kernel needs it.
  enum class NameInvalidation { BestAvailable, OneByOne };

  explicit KernelCaches(NameInvalidation nameInvalidation);
  ~KernelCaches();
  KernelCaches(const KernelCaches&) = delete;
  KernelCaches& operator=(const KernelCaches&) = delete;

  /// The session to notify, for as long as `stop` has not been called. Borrowed.
  void start(fuse_session* session);
  /// Waits for what is under way. Called once the kernel asks nothing any more.
  void stop();

  /// The kernel asks for the node's attributes again. May be called while it waits for an answer.
  void forgetAttributes(uint64_t node);
  /// The kernel asks for the directory's attributes and listing again. Like `forgetAttributes`.
  void forgetListing(uint64_t directory);
  /// The kernel looks up again the name `name` in `parent` and whatever lies below it.
  ///
  /// Since Linux 6.16 this holds when the call returns. Older kernels lock the directory for it,
  /// which somebody may hold who waits for our answer: a thread of its own then does it, moments
  /// later.
  void forgetNamesBelow(uint64_t parent, const std::string& name);

 private:
  struct Name {
    uint64_t parent;
    std::string name;
  };

  bool increaseEpoch();
  void invalidateQueuedNames();

  fuse_session* session_ = nullptr;
  bool kernelCountsEpochs_;
  std::mutex mutex_;  // Guards queue_ and stopping_; never held while the kernel is told.
  std::condition_variable changed_;
  std::deque<Name> queue_;
  bool stopping_ = false;
  std::thread worker_;  // Runs from the first name that needs it.
};

}  // namespace kelvane::userfs

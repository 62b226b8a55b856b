// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "overlayfs/burn_fs_delegate.h"
#include "overlayfs/overlay_trees.h"
#include "platform/userfs/gm_user_file_system.h"

namespace kelvane::tests {

/// A volume over the trees of `trees`, really mounted.
class MountedVolume {
 public:
  MountedVolume(const OverlayTrees& trees, OverlayInfo info, bool hasDisc = true);
  ~MountedVolume();
  MountedVolume(const MountedVolume&) = delete;
  MountedVolume& operator=(const MountedVolume&) = delete;

  /// Whether it was mounted; `failure` says why not.
  bool waitUntilMounted();
  std::string failure();
  /// Unmounts and waits for the notification. False where the volume stays.
  bool unmountAndWait();
  bool waitForDidUnmount();
  int unmountCount() const { return unmountCount_; }

  BurnFSDelegate& delegate() { return *delegate_; }
  GMUserFileSystem& fileSystem() { return *fileSystem_; }
  std::string path() const { return path_; }

 private:
  enum class State { Mounting, Mounted, Failed, Gone };
  void observe();
  bool waitFor(State first, State second);

  std::string path_;
  std::unique_ptr<BurnFSDelegate> delegate_;
  std::unique_ptr<GMUserFileSystem> fileSystem_;
  std::mutex mutex_;
  std::condition_variable changed_;
  State state_ = State::Mounting;
  std::string failure_;
  std::atomic<int> unmountCount_ = 0;
};

/// A test on a mounted volume: fill `trees` with the disc's content, then call `mount`.
class MountedOverlay : public testing::Test {
 protected:
  void SetUp() override;
  void mount(OverlayInfo info = {700, 100});
  /// The path of an item of the volume.
  std::string at(const std::string& path) const { return volume->path() + path; }
  /// Runs a shell command in the volume's root; expects that it succeeds. Returns what it printed.
  std::string sh(const std::string& command) const;
  /// The same for one that must fail.
  std::string shFails(const std::string& command) const;

  OverlayTrees trees;
  std::unique_ptr<MountedVolume> volume;
};

}  // namespace kelvane::tests

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "overlayfs/burn_fs_delegate.h"
#include "overlayfs/overlay_trees.h"
#include "platform/foundation/notification_center.h"
#include "platform/foundation/system_log.h"

namespace kelvane::tests {

/// A test on the delegate alone. Collects what it logs and counts its notifications.
class DelegateTest : public testing::Test {
 protected:
  void TearDown() override { NotificationCenter::defaultCenter().removeObserver(this); }

  BurnFSDelegate& makeDelegate(OverlayInfo info = {700, 100}) {
    return makeDelegateOver(trees.disc(), info);
  }

  BurnFSDelegate& makeDelegateOver(std::optional<std::string> disc, OverlayInfo info) {
    delegate = std::make_unique<BurnFSDelegate>(trees.overlay(), std::move(disc), info);
    NotificationCenter::defaultCenter().addObserver(this, "KelvaneFSSizeChanged", delegate.get(),
                                                    [this](const Notification&) { ++sizeChanges; });
    return *delegate;
  }

  /// A delegate with that many bytes free: what a write before it took is less than a megabyte.
  BurnFSDelegate& makeDelegateWithFree(int64_t bytes) {
    makeDelegate({1, 0});
    std::unique_ptr<UserData> file;
    EXPECT_TRUE(delegate->createFileAtPath("/filler", {}, &file, nullptr));
    const std::string filler(static_cast<size_t>((1 << 20) - bytes), 'x');
    delegate->writeFileAtPath("/filler", file.get(), filler.data(), filler.size(), 0, nullptr);
    delegate->releaseFileAtPath("/filler", std::move(file));
    sizeChanges = 0;
    return *delegate;
  }

  /// Makes a file through the delegate.
  void create(const std::string& path, const std::string& content = {}) {
    std::unique_ptr<UserData> file;
    ASSERT_TRUE(delegate->createFileAtPath(path, {}, &file, nullptr)) << path;
    if (!content.empty()) {
      delegate->writeFileAtPath(path, file.get(), content.data(), content.size(), 0, nullptr);
    }
    delegate->releaseFileAtPath(path, std::move(file));
  }

  bool isVisible(const std::string& path) {
    return delegate->attributesOfItemAtPath(path, nullptr, nullptr).has_value();
  }

  std::string overlay(const std::string& path) const { return trees.overlay() + path; }

  OverlayTrees trees;
  std::unique_ptr<BurnFSDelegate> delegate;
  int sizeChanges = 0;
  std::vector<std::string> log;
  SystemLogRedirection redirection{[this](const std::string& line) { log.push_back(line); }};
};

}  // namespace kelvane::tests

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/volumes/volume_services.h"

namespace kelvane::test {

/// A system whose mount table a test writes, and in which time passes only by being slept.
class FakeVolumeServices : public VolumeServices {
 public:
  std::vector<std::string> visibleVolumePaths() override {
    ++listings;
    if (onListing) onListing();
    return visible;
  }

  std::optional<MountTableEntry> mountTableEntryOf(const std::string& path) override {
    ++reads[path];
    if (onRead) onRead(path);
    const auto found = table.find(path);
    return found == table.end() ? std::nullopt : std::optional(found->second);
  }

  std::optional<std::string> volumeAtPath(const std::string& path) override {
    return lookupFails || !table.contains(path) ? std::nullopt : std::optional(path);
  }

  int unmountVolumeSync(const std::string& volume) override {
    unmounted.push_back(volume);
    const size_t attempt = unmounted.size() - 1;
    return attempt < statuses.size() ? statuses[attempt] : lastStatus;
  }

  void keepOthersFromMounting(const DRDevice& device) override {
    keptFromOthers.emplace_back(&device, unmounted.size());
    if (onKeptFromOthers) onKeptFromOthers();
  }

  void letOthersMount(const DRDevice& device) override { leftToOthers.push_back(&device); }

  void createDirectory(const std::string& path) override { created.push_back(path); }

  std::unique_ptr<MountRequest> requestMount(const DiscMount& mount) override {
    requests.push_back(mount);
    return std::make_unique<MountRequest>();
  }

  void sleep(std::chrono::milliseconds duration) override {
    ++sleeps;
    slept += duration;
    if (onSleep) onSleep();
  }

  void sleepUnlessMounted(std::chrono::milliseconds duration,
                          const std::string& /*mountPoint*/) override {
    sleep(duration);
  }

  /// Puts a visible volume at "/Volumes/NAME".
  void addVisible(const std::string& path, const std::string& mountedFrom,
                  const std::string& type = "cd9660", int64_t totalBlocks = 1000) {
    visible.push_back(path);
    table[path] = {type, path, mountedFrom, totalBlocks, 0, 2048};
  }

  std::vector<std::string> visible;
  std::map<std::string, MountTableEntry> table;
  bool lookupFails = false;
  /// The drives that nobody else was to mount, and after how many unmounts.
  std::vector<std::pair<const DRDevice*, size_t>> keptFromOthers;
  std::vector<const DRDevice*> leftToOthers;
  std::vector<int> statuses;  ///< Of the unmount attempts, in order; then `lastStatus`.
  int lastStatus = 0;

  std::function<void()> onListing;
  std::function<void(const std::string& path)> onRead;
  std::function<void()> onSleep;
  std::function<void()> onKeptFromOthers;

  int listings = 0;
  std::map<std::string, int> reads;
  std::vector<std::string> unmounted;
  std::vector<std::string> created;
  std::vector<DiscMount> requests;
  int sleeps = 0;
  std::chrono::milliseconds slept{0};
};

}  // namespace kelvane::test

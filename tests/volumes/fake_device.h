// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/recording/dr_device.h"

namespace kelvane::test {

/// A drive whose answers a test sets.
class FakeDevice : public DRDevice {
 public:
  explicit FakeDevice(std::string bsdName) : bsdName_(std::move(bsdName)) {}

  bool mediaIsBusy() const override { return answer("mediaIsBusy", busy); }
  bool isValid() const override { return answer("isValid", valid); }
  bool mediaIsPresent() const override { return answer("mediaIsPresent", present); }
  bool mediaIsTransitioning() const override {
    return answer("mediaIsTransitioning", transitioning);
  }
  bool writesCD() const override { return answer("writesCD", burner); }
  std::optional<std::string> mediaType() const override { return type; }
  bool mediaIsBlank() const override { return blank; }
  bool mediaIsAppendable() const override { return appendable; }
  std::string displayName() const override { return "KELVANE BURNER"; }
  std::string bsdName() const override { return bsdName_; }
  std::string ioRegistryEntryPath() const override { return "/emulated/" + bsdName_; }
  DRDeviceStatus status() const override { return deviceStatus; }
  std::string mediaIdentity() const override { return identity; }
  std::optional<std::string> emulatedDisc() const override { return disc; }
  Drive* drive() const override { return recordingDrive; }

  /// Gives the disc tracks in sessions 1, 2 … with these start addresses; the last one is open.
  void setTracks(const std::vector<std::optional<int64_t>>& starts) {
    DRDeviceMediaInfo media;
    for (const std::optional<int64_t>& start : starts) {
      const auto number = static_cast<DRTrackReference>(media.DRDeviceTrackRefsKey.size() + 1);
      media.DRDeviceTrackRefsKey.push_back(number);
      media.DRDeviceTrackInfoKey[number] = {start, std::nullopt, number};
    }
    media.DRDeviceMediaSessionCountKey =
        starts.empty() ? 0 : static_cast<uint32_t>(starts.size() - 1);
    deviceStatus.DRDeviceMediaInfoKey = media;
  }

  bool busy = false;
  bool valid = true;
  bool present = true;
  bool transitioning = false;
  bool burner = true;
  bool blank = false;
  bool appendable = true;
  std::optional<std::string> type = DRDeviceMediaTypeCDR;
  DRDeviceStatus deviceStatus;
  std::string identity;
  std::optional<std::string> disc;
  Drive* recordingDrive = nullptr;  ///< Where a recorder would be sent to; borrowed.
  /// The names of the questions that decide whether the drive is listed, as they were put.
  mutable std::vector<std::string> questions;

 private:
  bool answer(const char* question, bool value) const {
    questions.emplace_back(question);
    return value;
  }

  std::string bsdName_;
};

}  // namespace kelvane::test

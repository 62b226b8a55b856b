// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: which view the window shows, and what the opened disc's view says.
#include <filesystem>
#include <system_error>

#include "app/kv_controller.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

constexpr double kTransitionSeconds = 0.6;
constexpr uintmax_t kBytesPerMegabyte = 1048576;

std::string sizeInformation(const std::string& volume) {
  std::error_code failure;
  if (!std::filesystem::exists(volume, failure)) return localizedString("viewSizeNotAvail");
  const auto freeBytes = static_cast<int64_t>(std::filesystem::space(volume, failure).free);
  if (failure) return localizedString("viewSizeNotAvail");
  const auto megabytes = static_cast<int32_t>(freeBytes / static_cast<int64_t>(kBytesPerMegabyte));
  return format(localizedString("viewSizeOfDisk"), megabytes);
}

}  // namespace

void KVController::setMediaIsMounted(bool mounted) {
  if (mounted == mediaIsMounted_) return;
  mediaIsMounted_ = mounted;
  if (mounted) {
    window_.setHeaderLine(localizedString("headerDisksRemounted"));
    setOpenButtonCaption(localizedString("buttonclose"));
    performLater([this] { showMountedView(); });
  } else {
    window_.setHeaderLine(localizedString("headerDisksAvail"));
    performLater([this] { showMessageOrSelectionView(); });
  }
}

void KVController::showMessageOrSelectionView() {
  window_.setAnimationDuration(kTransitionSeconds);
  window_.setFrame(ContentView::Message, inWindowRect, Movement::Animated);
  window_.setFrame(ContentView::DiskScroll, inWindowRect, Movement::Animated);
  window_.setFrame(ContentView::MountedItem, rightOfWindowRect, Movement::Direct);
  window_.setFrame(ContentView::Burn, rightOfWindowRect, Movement::Animated);
}

void KVController::showMountedView() {
  updateMountedItemView();
  window_.setAnimationDuration(kTransitionSeconds);
  window_.setFrame(ContentView::Message, leftOfWindowRect, Movement::Animated);
  window_.setFrame(ContentView::DiskScroll, leftOfWindowRect, Movement::Animated);
  window_.setFrame(ContentView::MountedItem, inWindowRect, Movement::Animated);
}

void KVController::showBurnView() {
  window_.setAnimationDuration(kTransitionSeconds);
  window_.setFrame(ContentView::MountedItem, leftOfWindowRect, Movement::Animated);
  window_.setFrame(ContentView::Burn, inWindowRect, Movement::Animated);
}

void KVController::updateMountedItemView() {
  if (mountedItemUpdateWaits_.exchange(true)) return;
  performLater([this] {
    mountedItemUpdateWaits_ = false;
    performUpdateMountedItemView();
  });
}

void KVController::performUpdateMountedItemView() {
  const std::optional<DeviceRecord> record = currentDeviceDictionary();
  if (!record) return;
  if (window_.showsSizeInformation()) {
    window_.setSizeInformationField(sizeInformation(paths::overlayMountPoint()));
  }
  window_.setVolumeNameField(record->description.volumename);
  window_.setDeviceNameField(format("%@ in %@", record->description.mediatype.value_or(""),
                                    record->description.devicename));
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/volume_stays_alert.h"

#include "app/volume_users.h"

namespace kelvane {
namespace {

constexpr const char* kInUse = "VolumeBusy";
constexpr const char* kRefused = "VolumeNotUnmounted";

}  // namespace

Alert volumeStaysAlert(UnmountResult result, const std::string& mountPoint) {
  Alert alert;
  alert.buttonKeys = {"OK"};
  if (result == UnmountResult::Busy) {
    alert.messageKey = kInUse;
    alert.informativeKey = "VolumeBusyLong";
    alert.detail = describeVolumeUsers(programsUsing(mountPoint));
  } else {
    alert.messageKey = kRefused;
    alert.informativeKey = "VolumeNotUnmountedLong";
  }
  return alert;
}

bool isVolumeStaysAlert(const Alert& alert) {
  return alert.messageKey == kInUse || alert.messageKey == kRefused;
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/every_alert.h"

#include <string>

namespace kelvane::testing {
namespace {

Alert ok(const std::string& key, const std::string& longKey, const std::string& detail) {
  return {.style = Alert::Style::Warning,
          .buttonKeys = {"OK"},
          .messageKey = key,
          .informativeKey = longKey,
          .detail = detail};
}

Alert choice(Alert::Style style, const std::vector<std::string>& buttons, const std::string& key,
             const std::string& longKey, const std::string& detail) {
  return {.style = style,
          .buttonKeys = buttons,
          .messageKey = key,
          .informativeKey = longKey,
          .detail = detail};
}

}  // namespace

const std::vector<Alert>& everyAlert() {
  using Style = Alert::Style;
  static const std::string sense = "The drive said: write error, medium may be damaged (3/0C/00).";
  static const std::vector<Alert> alerts{
      choice(Style::Critical, {"Install", "Quit"}, "InstallationIncomplete",
             "InstallationIncompleteLong",
             "The program fusermount3 is missing; it belongs to the "
             "package “fuse3”."),
      ok("Unmountfailed", "Unmountfailedlong", ""),
      ok("VolumeBusy", "VolumeBusyLong", "gimp (4711)"),
      ok("VolumeNotUnmounted", "VolumeNotUnmountedLong", ""),
      ok("MountFailed", "MountFailedLong", "Permission denied"),
      ok("DriveClosed", "DriveClosedLong", "Add yourself to the group cdrom, then log in again."),
      ok("CreateTrackAbortedWithError", "CreateTrackAbortedWithErrorLong", "No space left"),
      ok("CreateTrackAbortedWithError", "SessionNotPreparedLong", "/tmp/.1234.hide is a folder"),
      ok("CDBurnError", "CDBurnErrorLong", sense),
      ok("DVDDeviceNotResponding", "DVDDeviceNotRespondingLong", ""),
      ok("DVDBurnError", "DVDBurnErrorLong", sense),
      ok("DVDBurnError", "DVDBurnErrorAllocLong", sense),
      ok("DVDBurnError", "DVDBurnErrorFull", sense),
      ok("DVDBurnedDoubtfully", "DVDBurnedDoubtfullyLong", "“letters/To Anna.txt” cannot be read"),
      ok("BurnDiscChanged", "BurnDiscChangedLong", "Your changes are kept in /tmp/817000000.kept."),
      ok("BurnDiscInUse", "BurnDiscInUseLong", "Your changes are kept in /tmp/817000000.kept."),
      choice(Style::Warning, {"Erase", "Cancel"}, "attempteraseshort", "attempteraselong", ""),
      ok("EraseError", "EraseErrorLong", sense),
      ok("EraseDriveBusy", "EraseDriveBusyLong", ""),
      ok("EraseVolumeBusy", "EraseVolumeBusyLong", "gimp (4711)"),
      ok("EraseDiscChanged", "EraseDiscChangedLong", ""),
      ok("CopyRunning", "CopyRunningLong", ""),
      ok("CopyNoRoom", "CopyNoRoomLong", "812 MB are needed, 412 MB are free."),
      ok("CopyFailures", "CopyFailuresLong", "“Film.mkv”: it has 4 GB or more"),
      ok("ChangesKept", "ChangesKeptLong", "Your changes are kept in /tmp/817000000.kept."),
      ok("LogoutDuringBurn", "LogoutDuringBurnLong", ""),
      ok("TrayKeptShut", "TrayKeptShutLong", ""),
      choice(Style::Warning, {"BurnConfirmationDiscard", "DiscardChangesKeep"}, "DiscardChanges",
             "DiscardChangesLong", ""),
      choice(Style::Informational, {"updatecheckdownload", "cancelbutton"}, "updatecheck",
             "updatechecklong", "")};
  return alerts;
}

}  // namespace kelvane::testing

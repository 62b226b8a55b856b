// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

namespace kelvane {

class DRDevice;

/// What the cell of the disc list shows of a record.
struct DeviceDescription {
  /// The disc's name: the last component of its mount path, "untitled" for a disc considered blank,
  /// the text of "loadingdisk" for one that is still loading.
  std::string volumename;
  /// Maker and model of the drive.
  std::string devicename;
  /// The short name of the medium, such as "CDRW". Absent for a disc that is still loading, and
  /// where the drive does not say.
  std::optional<std::string> mediatype;

  friend bool operator==(const DeviceDescription&, const DeviceDescription&) = default;
};

/// One drive with a disc in it, as a media scan found it. The shared currency of the application:
/// the disc list consists of these. Made afresh by every scan; a plain value, free to copy.
struct DeviceRecord {
  /// The drive; borrowed from the registry of drives, never null.
  kelvane::DRDevice* DRDevice = nullptr;
  /// The resource path of the image beside the disc.
  std::string icon;
  /// Whether the medium is rewritable; false for a disc that is still loading.
  bool RW = false;
  DeviceDescription description;
  /// Whether the disc is treated as blank. Absent for a disc that is still loading.
  std::optional<bool> consideredBlank;
  /// Nominal capacity in megabytes, "680.0" or "4300.0". Absent for a disc that is still loading
  /// and for other media.
  std::optional<std::string> totalMB;
  /// Why the disc cannot be opened, in the user's language; "" for a disc that is still loading.
  std::optional<std::string> unsupportedString;
  /// Tells the disc from another one that is in the drive later (DRDevice::mediaIdentity).
  std::string mediaIdentity = {};

  friend bool operator==(const DeviceRecord&, const DeviceRecord&) = default;
};

/// Whether the record can be selected and opened: nothing speaks against it.
inline bool isUsable(const DeviceRecord& record) {
  return !record.unsupportedString.has_value();
}

}  // namespace kelvane

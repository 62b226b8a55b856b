// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/sample_records.h"

namespace kelvane::testing {
namespace {

constexpr char kDrive[] = "KELVANE Emulated Burner";
constexpr char kIcon[] = ":/kelvanefs/diskicon.png";

}  // namespace

DeviceRecord usableRecord(const std::string& volumeName, const std::string& mediaType) {
  DeviceRecord record;
  record.icon = kIcon;
  record.RW = mediaType.ends_with("RW");
  record.description = {.volumename = volumeName, .devicename = kDrive, .mediatype = mediaType};
  record.consideredBlank = false;
  record.totalMB = mediaType.starts_with("CD") ? "680.0" : "4300.0";
  return record;
}

DeviceRecord refusedRecord(const std::string& volumeName, const std::string& reason) {
  DeviceRecord record = usableRecord(volumeName, "CDR");
  record.unsupportedString = reason;
  return record;
}

DeviceRecord loadingRecord(const std::string& loadingText) {
  DeviceRecord record;
  record.icon = kIcon;
  record.description = {.volumename = loadingText, .devicename = kDrive, .mediatype = {}};
  record.unsupportedString = "";
  return record;
}

}  // namespace kelvane::testing

// SPDX-License-Identifier: GPL-2.0-or-later
#include "media/disc_classification.h"
#include "media/media_scan.h"
#include "media/quellbrook.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kMountPathPause{100};
constexpr int kMountPathTries = 200;
constexpr char kBlankVolumeName[] = "untitled";

// Whether the drive has something to show. The order of the questions is fixed: a drive that is
// busy is asked nothing else.
bool belongsToList(const DRDevice& device) {
  if (device.mediaIsBusy()) return false;
  if (!device.isValid()) return false;
  if (!device.mediaIsPresent() && !device.mediaIsTransitioning()) return false;
  return device.writesCD();
}

DeviceRecord emptyRecord(DRDevice& device) {
  DeviceRecord record;
  record.DRDevice = &device;
  record.icon = Bundle::mainBundle().pathForResource("diskicon", "png").value_or("");
  record.RW = false;
  return record;
}

// The cell shows the drive's name alone, so there is no media type.
void describeLoadingDisc(DeviceRecord& record) {
  record.description.volumename = localizedString("loadingdisk");
  record.description.devicename = record.DRDevice->displayName();
  record.unsupportedString = "";
  record.RW = false;
}

// A disc that was just inserted takes its time to be mounted.
std::optional<std::string> awaitMountPath(const DRDevice& device, VolumeServices& services) {
  const auto ask = [&] {
    return quellbrook::mountPathForFallbackBsdName(device, std::nullopt, services);
  };
  std::optional<std::string> mountPath = ask();
  for (int tries = 0; !mountPath && tries < kMountPathTries; ++tries) {
    services.sleep(kMountPathPause);
    mountPath = ask();
  }
  return mountPath ? mountPath : ask();
}

std::optional<std::string> volumeNameOf(const DRDevice& device, bool consideredBlank,
                                        VolumeServices& services) {
  if (consideredBlank) return kBlankVolumeName;
  const std::optional<std::string> mountPath = awaitMountPath(device, services);
  if (!mountPath) return std::nullopt;
  return paths::lastPathComponent(*mountPath);
}

VolumeAnswers askVolume(const DRDevice& device, VolumeServices& services) {
  const std::optional<std::string> mountPath =
      quellbrook::mountPathForFallbackBsdName(device, std::nullopt, services);
  VolumeAnswers answers;
  answers.megabytesUsed = quellbrook::fsMediaMBUsed(device, mountPath.value_or(""), services);
  answers.kelvaneCompliant = quellbrook::mediaKelvaneCompliant(device, device.bsdName(), services);
  return answers;
}

// False where the disc does not come up, and is left out of the list.
bool describeDisc(DeviceRecord& record, VolumeServices& services) {
  const DRDevice& device = *record.DRDevice;
  const std::optional<std::string> mediaType = device.mediaType();
  const bool blank =
      isConsideredBlank({mediaType, device.mediaIsBlank(), device.mediaIsAppendable()});
  record.consideredBlank = blank;
  record.RW = isRewritable(mediaType);
  const std::optional<std::string> volumeName = volumeNameOf(device, blank, services);
  if (!volumeName) {
    systemLog("unable to get mountpath. ignoring disk.");
    return false;
  }
  record.description = {*volumeName, device.displayName(), shortMediaType(mediaType)};
  if (const std::optional<NominalCapacity> capacity = nominalCapacity(mediaType)) {
    record.totalMB = capacity->totalMB;
  }
  std::optional<VolumeAnswers> volume;
  if (!blank) volume = askVolume(device, services);
  if (const std::optional<std::string> key = refusalKey(mediaType, volume)) {
    record.unsupportedString = localizedString(*key);
  }
  return true;
}

}  // namespace

std::vector<DeviceRecord> buildDeviceRecords(std::span<DRDevice* const> devices,
                                             VolumeServices& services) {
  std::vector<DeviceRecord> records;
  for (DRDevice* device : devices) {
    if (!belongsToList(*device)) continue;
    DeviceRecord record = emptyRecord(*device);
    if (device->mediaIsTransitioning()) {
      describeLoadingDisc(record);
    } else {
      // Before anything is waited for: the next disc may have come by then.
      record.mediaIdentity = device->mediaIdentity();
      if (!describeDisc(record, services)) continue;
    }
    records.push_back(std::move(record));
  }
  return records;
}

}  // namespace kelvane

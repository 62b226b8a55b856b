// SPDX-License-Identifier: GPL-2.0-or-later
#include "media/disc_classification.h"

#include "platform/recording/dr_media_types.h"

namespace kelvane {
namespace {

constexpr NominalCapacity kCdCapacity = {"680.0", 680.0};
constexpr NominalCapacity kDvdCapacity = {"4300.0", 4300.0};

bool isDvd(const std::optional<std::string>& mediaType) {
  return mediaType == DRDeviceMediaTypeDVDR || mediaType == DRDeviceMediaTypeDVDPlusRW ||
         mediaType == DRDeviceMediaTypeDVDRW;
}

}  // namespace

bool isConsideredBlank(const MediumAnswers& answers) {
  if (answers.mediaType == DRDeviceMediaTypeDVDRW && answers.mediaIsAppendable) return true;
  return answers.mediaIsBlank;
}

bool isRewritable(const std::optional<std::string>& mediaType) {
  return mediaType == DRDeviceMediaTypeDVDRW || mediaType == DRDeviceMediaTypeCDRW ||
         mediaType == DRDeviceMediaTypeDVDPlusRW;
}

std::optional<NominalCapacity> nominalCapacity(const std::optional<std::string>& mediaType) {
  if (isWritableCd(mediaType)) return kCdCapacity;
  if (isDvd(mediaType)) return kDvdCapacity;
  return std::nullopt;
}

bool isRefusedType(const std::optional<std::string>& mediaType) {
  if (!mediaType) return false;
  return !isWritableCd(mediaType) && mediaType != DRDeviceMediaTypeDVDPlusRW &&
         mediaType != DRDeviceMediaTypeDVDRW;
}

std::optional<std::string> shortMediaType(const std::optional<std::string>& mediaType) {
  if (!mediaType) return std::nullopt;
  if (mediaType->size() < kMediaTypePrefixLength) return std::string();
  return mediaType->substr(kMediaTypePrefixLength);
}

std::optional<std::string> refusalKey(const std::optional<std::string>& mediaType,
                                      const std::optional<VolumeAnswers>& volume) {
  if (isRefusedType(mediaType)) return kUnsupportedDiskTypeKey;
  if (!volume) return std::nullopt;
  if (!volume->kelvaneCompliant) return kUnsupportedDiskFormatKey;
  const std::optional<NominalCapacity> capacity = nominalCapacity(mediaType);
  if (capacity && volume->megabytesUsed >= capacity->megabytes) return kDiskFullKey;
  return std::nullopt;
}

}  // namespace kelvane

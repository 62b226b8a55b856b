// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

namespace kelvane {

/// The kinds of media, as `DRDevice::mediaType` reports them. All share a prefix of 17 characters;
/// what follows is the short name that people are shown.
inline constexpr char DRDeviceMediaTypeCDROM[] = "DRDeviceMediaTypeCDROM";
inline constexpr char DRDeviceMediaTypeCDR[] = "DRDeviceMediaTypeCDR";
inline constexpr char DRDeviceMediaTypeCDRW[] = "DRDeviceMediaTypeCDRW";
inline constexpr char DRDeviceMediaTypeDVDROM[] = "DRDeviceMediaTypeDVDROM";
inline constexpr char DRDeviceMediaTypeDVDRAM[] = "DRDeviceMediaTypeDVDRAM";
inline constexpr char DRDeviceMediaTypeDVDR[] = "DRDeviceMediaTypeDVDR";
inline constexpr char DRDeviceMediaTypeDVDRDualLayer[] = "DRDeviceMediaTypeDVDRDualLayer";
inline constexpr char DRDeviceMediaTypeDVDRW[] = "DRDeviceMediaTypeDVDRW";
inline constexpr char DRDeviceMediaTypeDVDPlusR[] = "DRDeviceMediaTypeDVDPlusR";
inline constexpr char DRDeviceMediaTypeDVDPlusRDoubleLayer[] =
    "DRDeviceMediaTypeDVDPlusRDoubleLayer";
inline constexpr char DRDeviceMediaTypeDVDPlusRW[] = "DRDeviceMediaTypeDVDPlusRW";
inline constexpr char DRDeviceMediaTypeBDROM[] = "DRDeviceMediaTypeBDROM";
inline constexpr char DRDeviceMediaTypeBDR[] = "DRDeviceMediaTypeBDR";
inline constexpr char DRDeviceMediaTypeBDRE[] = "DRDeviceMediaTypeBDRE";

/// The length of the prefix that the values above share.
inline constexpr int kMediaTypePrefixLength = 17;

/// Whether the medium is a CD that can be written to; false where its kind is not known.
inline bool isWritableCd(const std::optional<std::string>& mediaType) {
  return mediaType == DRDeviceMediaTypeCDR || mediaType == DRDeviceMediaTypeCDRW;
}

}  // namespace kelvane

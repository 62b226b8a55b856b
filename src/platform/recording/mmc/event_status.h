// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// What has happened to the medium since a drive was last asked. A drive tells each event once, to
/// whoever asks first.
enum class MediaEvent : uint8_t {
  None = 0,
  EjectRequest = 1,
  NewMedia = 2,
  MediaRemoval = 3,
  MediaChanged = 4,
};

struct MediaEventStatus {
  MediaEvent event = MediaEvent::None;
  bool trayOpen = false;
  bool mediaPresent = false;
};

/// Reads a reply to GET EVENT STATUS NOTIFICATION for the media class. Empty where the drive had
/// nothing to say of it. (MMC-5, 6.7.3)
std::optional<MediaEventStatus> parseMediaEvent(std::span<const uint8_t> reply);

/// GET EVENT STATUS NOTIFICATION, polled, media class. (MMC-5, 6.7)
std::optional<MediaEventStatus> readMediaEvent(Transport& transport);

}  // namespace kelvane::mmc

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/media_identity.h"

#include <functional>
#include <string_view>

#include "platform/recording/media_state.h"
#include "platform/recording/mmc/read_sector.h"

namespace kelvane {
namespace {

constexpr int64_t kSystemArea = 16;

std::string digestOf(const mmc::Sector& sector) {
  const std::string_view bytes(reinterpret_cast<const char*>(sector.data()), sector.size());
  return std::to_string(std::hash<std::string_view>{}(bytes));
}

}  // namespace

std::string readMediaIdentity(mmc::Transport& transport) {
  const MediaState state = readMediaState(transport);
  if (!state.present || state.transitioning) return {};
  std::string identity = std::to_string(static_cast<int>(state.profile));
  for (const int64_t number : {int64_t{state.blank}, int64_t{state.sessions},
                               int64_t{state.lastTrack}, state.nextWritableAddress.value_or(-1)}) {
    identity += " " + std::to_string(number);
  }
  if (state.blank) return identity;
  const auto start = lastSessionStart(readDeviceStatus(transport));
  if (!start || *start > INT32_MAX - kSystemArea) return identity;
  const auto sector = mmc::readSector(transport, static_cast<int32_t>(*start + kSystemArea));
  return sector ? identity + " " + digestOf(*sector) : std::string();
}

}  // namespace kelvane

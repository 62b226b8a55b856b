// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/disc_volume.h"

#include "virtualdrive/media/medium_rules.h"
#include "virtualdrive/tool/commands.h"

namespace kelvane::virtualdrive::tool {
namespace {

/// Where the session begins, or nothing and a complaint.
std::optional<Lba> sessionStart(const DiscState& disc, std::optional<int> session) {
  const auto sessions = MediumRules::of(disc).sessions(disc);
  const auto count = static_cast<int>(sessions.size());
  if (count == 0) {
    complain("The disc has no closed session.");
    return std::nullopt;
  }
  const int wanted = session.value_or(count);
  if (wanted < 1 || wanted > count) {
    complain("The disc has no session " + std::to_string(wanted) + "; the last one is " +
             std::to_string(count) + ".");
    return std::nullopt;
  }
  return sessions[static_cast<std::size_t>(wanted - 1)].start;
}

}  // namespace

std::optional<DiscVolume> openVolume(const std::filesystem::path& disc, std::optional<int> session,
                                     int* status) {
  *status = kDiscUnusable;
  const auto drive = openDisc(disc);
  if (!drive) return std::nullopt;
  std::string error;
  const auto state = drive->inspect(&error);
  if (!state) return complain(error), std::nullopt;
  *status = kFailed;
  const auto start = sessionStart(*state, session);
  if (!start) return std::nullopt;
  DiscVolume opened;
  opened.source = isovolume::FileBlockSource::open(drive->sectorsFile().string(), &error);
  if (!opened.source) return complain(error), std::nullopt;
  opened.volume =
      isovolume::IsoVolume::open(*opened.source, {static_cast<isovolume::Lba>(*start)}, &error);
  if (!opened.volume) return complain(error), std::nullopt;
  return opened;
}

}  // namespace kelvane::virtualdrive::tool

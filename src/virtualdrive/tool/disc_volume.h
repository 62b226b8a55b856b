// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "helpers/isovolume/iso_volume.h"

namespace kelvane::virtualdrive::tool {

/// A session of a disc, opened for reading with the blocks it comes from.
struct DiscVolume {
  std::unique_ptr<isovolume::FileBlockSource> source;
  std::unique_ptr<isovolume::IsoVolume> volume;
};

/// Opens a session of the disc, counted from 1, or the last one. Complains and gives nothing where
/// there is none; `status` is the exit status then.
std::optional<DiscVolume> openVolume(const std::filesystem::path& disc, std::optional<int> session,
                                     int* status);

}  // namespace kelvane::virtualdrive::tool

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

#include "platform/recording/drive.h"

namespace kelvane {

/// Opens the emulated drive whose disc is the folder `folder` (absolute), and closes its tray.
/// Null, with a sentence in `error`, where the folder holds no disc or one of a format not known.
///
/// Programs that open drives themselves find it at /dev/sr0 with the environment of the identity,
/// which preloads the shim of this installation.
std::unique_ptr<Drive> openEmulatedDrive(const std::string& folder, const std::string& bsdName,
                                         std::string* error);

}  // namespace kelvane

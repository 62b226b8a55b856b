// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

class QMimeData;

namespace kelvane {

/// The paths of the files and folders of this machine that were dragged or copied to the clipboard,
/// as the bytes that they are. Empty where there is none, or something else is among them.
std::optional<std::vector<std::string>> localFilesIn(const QMimeData* data);

}  // namespace kelvane

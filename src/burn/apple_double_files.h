// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// Deletes what a desktop has put beside the files of the directory `path` to hold their resource
/// forks and extended attributes: each item below it whose name begins with "._", a directory with
/// all that is in it. Logs a line for each. A deletion that fails is ignored, and so is a directory
/// that cannot be read: the walk goes on with the next item. No link is followed.
void removeAppleDoubleFiles(const std::string& path);

}  // namespace kelvane

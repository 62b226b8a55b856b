// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// The absolute path of the running program's file, with symbolic links resolved; empty where /proc
/// is not there.
///
/// Tests that are not installed may say where the installation is: KELVANEFS_EXECUTABLE, where set,
/// is taken instead.
std::string executablePath();

}  // namespace kelvane

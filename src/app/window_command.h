// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

/// `kelvanefs [--drive DISC.kvdisc]…`: the application with its window. `arguments` are those of
/// the whole command line. Returns the exit status.
int runWindowCommand(int argc, char** argv);

}  // namespace kelvane

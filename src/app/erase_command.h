// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

/// `kelvanefs erase …`: erases a rewritable disc. `arguments` are those of the whole command line.
/// Returns the exit status.
int runEraseCommand(int argc, char** argv);

}  // namespace kelvane

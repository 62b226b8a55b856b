// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

/// `kelvanefs batch …`: opens a disc, runs a command on its volume, burns. `arguments` are those of
/// the whole command line. Returns the exit status.
int runBatchCommand(int argc, char** argv);

}  // namespace kelvane

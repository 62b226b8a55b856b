// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

/// Lets this process have as many descriptors as the system allows it, instead of the usual 1024:
/// each file that is open on a volume takes one here. Programs that it starts inherit that. To be
/// called once, at the beginning.
void raiseDescriptorLimit();

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/commands/command.h"

namespace kelvane::virtualdrive {

/// Which features a GET CONFIGURATION asks for.
enum class FeatureScope : std::uint8_t { All = 0, Current = 1, One = 2 };

/// The descriptors of the drive's features from number `from` on, or of that one (MMC-5, 5.3).
AnswerBytes featureDescriptors(const Command& command, FeatureScope scope, unsigned from);

}  // namespace kelvane::virtualdrive

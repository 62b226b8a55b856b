// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// The longest beginning of `name` that a volume can be named with: 32 bytes (ECMA-119 8.4.7), of
/// which no character is cut in two (UTF-8). mkisofs gives up on a longer name, and the session
/// with it.
std::string volumeIdentifierOf(const std::string& name);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "helpers/isovolume/block_source.h"

namespace kelvane::isovolume {

/// The longest name in bytes that a Linux program can meet in a directory.
inline constexpr std::size_t kMaximumNameLength = 255;

/// The name that an identifier without Rock Ridge and Joliet has for a Linux user: what the kernel
/// shows by default. Lower case; ";1" and ".;1" at the end go, any other ";" becomes ".".
/// (ECMA-119, 7.5)
void plainName(Bytes identifier, std::string* name);

/// The UTF-8 name of a Joliet identifier (UCS-2 or UTF-16, big-endian), without ";1" and without
/// dots at the end, as the kernel shows it. What is no character becomes U+FFFD.
void jolietName(Bytes identifier, std::string* name);

/// UTF-8 of big-endian UTF-16 text, up to its first NUL.
std::string utf8OfUtf16(Bytes text);

/// Cuts `name` at kMaximumNameLength bytes, in front of the UTF-8 character that would be split.
void limitName(std::string* name);

/// Whether a directory may show `name`: not empty, not "." or "..", without "/" and NUL.
bool isPermittedName(std::string_view name);

}  // namespace kelvane::isovolume

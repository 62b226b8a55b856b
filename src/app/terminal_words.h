// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/foundation/placeholders.h"
#include "ui/window_outlets.h"

namespace kelvane {

/// Says something on standard error, as a line of its own.
template <typename... Values>
void say(std::string_view text, const Values&... values) {
  std::fprintf(stderr, "%s\n", format(text, values...).c_str());
}

/// An alert as one line: what happened, and why in the words of who knows best.
std::string asLine(const Alert& alert);

/// A name from a disc or a drive, fit for a terminal: control characters become "?".
std::string printable(std::string text);

}  // namespace kelvane

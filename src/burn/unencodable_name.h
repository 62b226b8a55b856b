// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <span>
#include <stop_token>
#include <string>

namespace kelvane {

/// The path, in the overlay directory, of an item whose name is no valid UTF-8. mkisofs gives up on
/// such a session when it writes its Joliet tree, which it does not do to tell the size. What
/// stands for the `deleted` items, given by their volume paths, is hidden from that tree and does
/// not count. Empty where there is none, and where `stop` was requested. Any thread.
std::optional<std::string> unencodableName(const std::string& overlay,
                                           std::span<const std::string> deleted,
                                           const std::stop_token& stop);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stop_token>
#include <string>
#include <string_view>

namespace kelvane {

/// The lowest build number that is newer than this build. A constant of its own, which does not
/// follow from the version that people read: raised by one with each release.
inline constexpr int32_t kFirstNewerBuild = 1601;

/// How long an answer of the version endpoint is waited for, all of it.
inline constexpr std::chrono::milliseconds kUpdateCheckTimeout{10'000};

/// The longest answer that is read, in bytes. What is longer is no build number.
inline constexpr size_t kLongestUpdateReply = 65'536;

/// The build number that an answer begins with, behind white space: its decimal digits up to
/// anything else. 0 where it begins with something else, or where not all of it is ASCII. Numbers
/// that are too large count as the largest.
int32_t buildNumberOf(std::string_view reply);

/// Asks the endpoint and gives the body of its answer, whatever its HTTP status: an error page is
/// an answer like any other. Redirects are followed, though never from HTTPS to HTTP; nothing is
/// kept or taken from a cache; no cookies.
///
/// Empty where there is no whole answer within `timeout`, where the answer is longer than
/// `kLongestUpdateReply`, where the endpoint is not an HTTP or HTTPS address, and where `stop` was
/// requested meanwhile. Blocks; called on a thread without an event loop of its own.
std::string fetchUpdateReply(const std::string& endpoint, std::chrono::milliseconds timeout,
                             const std::stop_token& stop);

}  // namespace kelvane

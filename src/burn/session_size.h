// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "burn/dvd_burn_parameters.h"
#include "burn/mkisofs_arguments.h"

namespace kelvane {

/// The arguments with which mkisofs tells the size of the session that it would build with
/// `mkisofsArguments(request)`. It writes nothing then.
std::vector<std::string> sessionSizeArguments(const SessionImageRequest& request);

/// The session of a DVD that is gone on with, for mkisofs: the drive, and the block at which the
/// next session begins.
struct DvdContinuation {
  std::string deviceName;
  std::string sessionString;
};

/// The same for the session that growisofs has mkisofs build with `growisofsArguments(parameters)`.
/// `continued` is empty for a first session.
std::vector<std::string> sessionSizeArguments(const DVDBurnParameters& parameters,
                                              const std::optional<DvdContinuation>& continued);

/// Has files whose names begin with "._" left out, as they are deleted before such a session is
/// built.
void leaveOutAppleDouble(std::vector<std::string>& arguments);

/// What mkisofs told of a session.
struct SessionSize {
  /// Its blocks of 2048 bytes; empty where it could not be built.
  std::optional<uint64_t> blocks;
  /// What mkisofs wrote to standard error; says why where there is no size.
  std::string said;
};

/// Runs mkisofs with such arguments and waits for it. Where `stop` is requested it is ended, and
/// nothing is told. For a thread of its own, without an event loop.
SessionSize measureSession(const std::vector<std::string>& arguments, const std::stop_token& stop);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane::isomount {

/// Gives up every right that serving a mounted volume does not need, for good: what a hostile disc
/// might make of this process can then read the one source and speak to the kernel about the one
/// mount, and nothing else.
///
/// In order: no new rights through execution; as root also no supplementary groups, no capability
/// (in no set), and the user and group "nobody"; limits on descriptors, processes, file sizes and
/// memory; the file creation mask; and a filter that leaves only the system calls named in
/// system_call_filter.cpp.
///
/// Descriptors stay open. False when a right could not be given up, with the reason in `*error`.
bool giveUpRights(std::string* error);

/// Part of giveUpRights: from now on every other system call fails with EPERM.
bool filterSystemCalls(std::string* error);

}  // namespace kelvane::isomount

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane::recorder {

/// How a job ended. What went wrong has been reported.
enum class JobOutcome { Done, Failed };

}  // namespace kelvane::recorder

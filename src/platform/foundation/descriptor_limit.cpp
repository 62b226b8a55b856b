// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/descriptor_limit.h"

#include <sys/resource.h>

#include <algorithm>

namespace kelvane {
namespace {

// Beyond what a desktop's programs open at once; some programs walk through all that they may have.
constexpr rlim_t kEnough = 65536;

}  // namespace

void raiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  const rlim_t wanted = std::min(limit.rlim_max, kEnough);
  if (limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur >= wanted) return;
  limit.rlim_cur = wanted;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace kelvane

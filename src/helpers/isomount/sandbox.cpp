// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isomount/sandbox.h"

#include <grp.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace kelvane::isomount {
namespace {

/// "nobody" and "nogroup" as the kernel itself knows them (the overflow IDs).
constexpr unsigned kNobody = 65534;

bool failed(const char* what, std::string* error) {
  *error = std::string("cannot give up rights: ") + what + ": " + std::strerror(errno);
  return false;
}

bool dropCapabilities(std::string* error) {
  __user_cap_header_struct header = {};
  header.version = _LINUX_CAPABILITY_VERSION_3;
  __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
  if (syscall(SYS_capset, &header, none) != 0) return failed("capabilities", error);
  return true;
}

bool dropRoot(std::string* error) {
  // Where the bounding set cannot be emptied, as in some containers, no_new_privs does the same
  // work.
  for (int capability = 0; prctl(PR_CAPBSET_READ, capability, 0, 0, 0) >= 0; ++capability) {
    prctl(PR_CAPBSET_DROP, capability, 0, 0, 0);
  }
  prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
  // A user namespace need not know "nobody": then the user stays, without any capability.
  const bool changed = setgroups(0, nullptr) == 0 && setresgid(kNobody, kNobody, kNobody) == 0 &&
                       setresuid(kNobody, kNobody, kNobody) == 0;
  if (!changed && errno != EINVAL && errno != EPERM) return failed("user", error);
  return dropCapabilities(error);
}

bool limitResources(std::string* error) {
  constexpr rlim_t kMostDescriptors = 32;
  constexpr rlim_t kNone = 0;
  const std::pair<__rlimit_resource, rlim_t> limits[] = {
      {RLIMIT_CORE, kNone},           {RLIMIT_FSIZE, kNone},
      {RLIMIT_NPROC, kNone},          {RLIMIT_NOFILE, kMostDescriptors},
#ifndef __SANITIZE_ADDRESS__  // whose own memory is far larger
      {RLIMIT_DATA, rlim_t{1} << 31},
#endif
  };
  for (const auto& [resource, most] : limits) {
    rlimit limit = {};
    if (getrlimit(resource, &limit) != 0) return failed("limits", error);
    // Whoever started us may have set a lower one, which cannot be raised any more.
    limit.rlim_max = std::min(limit.rlim_max, most);
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
    if (setrlimit(resource, &limit) != 0) return failed("limits", error);
  }
  return true;
}

}  // namespace

bool giveUpRights(std::string* error) {
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return failed("no_new_privs", error);
  const bool rightsGone = geteuid() == 0 ? dropRoot(error) : dropCapabilities(error);
  if (!rightsGone) return false;
  umask(0777);
  return limitResources(error) && filterSystemCalls(error);
}

}  // namespace kelvane::isomount

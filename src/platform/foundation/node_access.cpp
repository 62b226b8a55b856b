// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/node_access.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <vector>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

constexpr size_t kEntryBytes = 16384;

std::string groupName(gid_t number) {
  group entry{};
  group* found = nullptr;
  std::vector<char> text(kEntryBytes);
  getgrgid_r(number, &entry, text.data(), text.size(), &found);
  return found == nullptr ? std::to_string(number) : found->gr_name;
}

// The user's entry has a group of its own, beside those that list the user.
bool isListedIn(gid_t number, const std::string& user, gid_t ownGroup) {
  std::array<gid_t, 1024> groups{};
  int count = static_cast<int>(groups.size());
  if (getgrouplist(user.c_str(), ownGroup, groups.data(), &count) < 0) return false;
  const auto end = groups.begin() + count;
  return std::find(groups.begin(), end, number) != end;
}

}  // namespace

NodeAccess accessToNode(const std::string& path) {
  NodeAccess access;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return access;
  access.exists = true;
  access.isUsable = faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
  access.groupIsAllowed = (status.st_mode & S_IRGRP) != 0 && (status.st_mode & S_IWGRP) != 0;
  access.group = groupName(status.st_gid);
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> text(kEntryBytes);
  getpwuid_r(geteuid(), &entry, text.data(), text.size(), &found);
  if (found == nullptr) {
    access.user = std::to_string(geteuid());
    return access;
  }
  access.user = found->pw_name;
  access.joinsAtNextLogin = isListedIn(status.st_gid, access.user, found->pw_gid);
  return access;
}

std::string describeMissingAccess(const std::string& path, const NodeAccess& access,
                                  const std::string& udevRule) {
  if (access.isUsable) return {};
  if (!access.exists) {
    return format(localizedString("ReasonNoNode", "There is no %@."), path);
  }
  if (access.groupIsAllowed && access.joinsAtNextLogin) {
    return format(localizedString("ReasonGroupAtNextLogin",
                                  "%@ can be used by the group %@. You belong to it, but this "
                                  "session does not know yet: log out and in again."),
                  path, access.group);
  }
  if (access.groupIsAllowed) {
    return format(localizedString("ReasonNotInGroup",
                                  "%@ can be used by the group %@ only, and you do not belong to "
                                  "it. As root, run: adduser %@ %@. Then log out and in again."),
                  path, access.group, access.user, access.group);
  }
  return format(localizedString("ReasonNoAccess",
                                "You may not read and write %@. A rule of udev gives access to it: "
                                "%@."),
                path, udevRule);
}

}  // namespace kelvane

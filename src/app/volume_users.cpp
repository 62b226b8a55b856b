// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/volume_users.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;

bool liesAtOrBelow(const std::string& path, const std::string& mountPoint) {
  return path == mountPoint || path.starts_with(mountPoint + "/");
}

/// What the link under /proc points to, where that lies in the volume.
std::optional<std::string> targetInVolume(const fs::path& link, const std::string& mountPoint) {
  std::error_code failure;
  const std::string target = fs::read_symlink(link, failure).string();
  if (failure || !liesAtOrBelow(target, mountPoint)) return std::nullopt;
  return target;
}

std::optional<std::string> usedPathOf(const fs::path& process, const std::string& mountPoint) {
  for (const char* link : {"cwd", "root", "exe"}) {
    if (auto target = targetInVolume(process / link, mountPoint)) return target;
  }
  std::error_code failure;
  for (const fs::directory_entry& descriptor : fs::directory_iterator(process / "fd", failure)) {
    if (auto target = targetInVolume(descriptor.path(), mountPoint)) return target;
  }
  return std::nullopt;
}

std::string programName(const fs::path& process) {
  std::ifstream file(process / "comm");
  std::string name;
  std::getline(file, name);
  return name;
}

}  // namespace

std::vector<VolumeUser> programsUsing(const std::string& mountPoint) {
  std::vector<VolumeUser> users;
  std::error_code failure;
  for (const fs::directory_entry& process : fs::directory_iterator("/proc", failure)) {
    const std::string name = process.path().filename().string();
    int64_t identifier = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), identifier);
    if (parsed.ec != std::errc() || parsed.ptr != name.data() + name.size()) continue;
    if (auto path = usedPathOf(process.path(), mountPoint)) {
      users.push_back({identifier, programName(process.path()), *path});
    }
  }
  std::sort(users.begin(), users.end(), [](const VolumeUser& a, const VolumeUser& b) {
    return a.processIdentifier < b.processIdentifier;
  });
  return users;
}

std::string describeVolumeUsers(const std::vector<VolumeUser>& users) {
  std::string text;
  for (const VolumeUser& user : users) {
    if (!text.empty()) text += "\n";
    text += format(localizedString("VolumeUser", "%@ (process %i) uses %@."), user.program,
                   user.processIdentifier, user.path);
  }
  return text;
}

}  // namespace kelvane

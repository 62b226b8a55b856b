// SPDX-License-Identifier: GPL-2.0-or-later
#include <sys/stat.h>

#include <cinttypes>
#include <cstdio>

#include "virtualdrive/tool/commands.h"
#include "virtualdrive/tool/disc_volume.h"

namespace kelvane::virtualdrive::tool {
namespace {

char typeLetter(mode_t mode) {
  if (S_ISDIR(mode)) return 'd';
  if (S_ISLNK(mode)) return 'l';
  return S_ISREG(mode) ? '-' : '?';
}

std::string permissions(mode_t mode) {
  std::string text(1, typeLetter(mode));
  for (int bit = 8; bit >= 0; --bit) {
    const bool set = (mode >> bit & 1U) != 0;
    text += set ? "xwr"[bit % 3] : '-';
  }
  return text;
}

/// Lists a directory and what is below it; the volume bounds the depth. False where some of it
/// cannot be read.
bool listDirectory(isovolume::IsoVolume& volume, isovolume::NodeId directory,
                   const std::string& path) {
  bool complete = true;
  const auto status = volume.readDirectory(
      directory, 0, [&](const isovolume::DirectoryEntry& entry, std::uint64_t) {
        const auto attributes = volume.attributes(entry.node);
        const auto entryPath = path + "/" + std::string(entry.name);
        std::string target;
        if (S_ISLNK(attributes.mode)) {
          complete &= volume.readLink(entry.node, &target) == isovolume::Status::ok;
          target.insert(0, " -> ");
        }
        std::printf("%s %12" PRIu64 " %s%s\n", permissions(attributes.mode).c_str(),
                    attributes.size, entryPath.c_str(), target.c_str());
        if (S_ISDIR(attributes.mode)) {
          complete &= listDirectory(volume, entry.node, entryPath);
        }
        return true;
      });
  return status == isovolume::Status::ok && complete;
}

}  // namespace

int listFiles(const std::filesystem::path& disc, std::optional<int> session) {
  int status = kFailed;
  const auto opened = openVolume(disc, session, &status);
  if (!opened) return status;
  if (listDirectory(*opened->volume, isovolume::kRootNode, "")) return kDone;
  complain("Some of the volume cannot be read.");
  return kFailed;
}

}  // namespace kelvane::virtualdrive::tool

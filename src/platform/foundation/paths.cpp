// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/paths.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/foundation/placeholders.h"

namespace kelvane::paths {
namespace {

// Seconds from 1 January 1970 to 1 January 2001, both 00:00:00 UTC.
constexpr int64_t kReferenceDate = 978307200;

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// Whether the folder exists, or could be made. Everybody may mount below it, as below /tmp.
bool existsOrCanBeMade(const std::string& folder) {
  std::error_code failure;
  if (std::filesystem::is_directory(folder, failure)) return true;
  if (mkdir(folder.c_str(), 0755) != 0) return false;
  chmod(folder.c_str(), 01777);
  return true;
}

}  // namespace

std::string prefix() {
  std::string given = environment("KELVANEFS_PREFIX");
  while (given.ends_with('/')) given.pop_back();
  return given;
}

std::string volumesDirectory() {
  std::string fixed = prefix() + "/Volumes";
  if (existsOrCanBeMade(fixed)) return fixed;
  const std::string runtimeFolder = environment("XDG_RUNTIME_DIR");
  if (runtimeFolder.empty()) return fixed;
  const std::string standIn = runtimeFolder + "/kelvanefs/Volumes";
  std::error_code failure;
  std::filesystem::create_directories(standIn, failure);
  return std::filesystem::is_directory(standIn, failure) ? standIn : fixed;
}

std::string overlayMountPoint() {
  return volumesDirectory() + "/tarnwick";
}

std::string temporaryDirectory() {
  return prefix() + "/tmp";
}

std::string overlayDirectory(int32_t secondsSinceReferenceDate) {
  return prefix() + format("/tmp/%i", secondsSinceReferenceDate);
}

int32_t secondsSinceReferenceDate() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const int64_t seconds = std::chrono::duration_cast<std::chrono::seconds>(now).count();
  return static_cast<int32_t>(seconds - kReferenceDate);
}

std::string hideListFile(std::string_view tmpDirPath) {
  return prefix() + format("/tmp/.%@.hide", lastPathComponent(tmpDirPath));
}

std::string burnImage(std::string_view tmpDirPath) {
  return prefix() + format("/tmp/%@.iso", lastPathComponent(tmpDirPath));
}

std::string hiddenMountFolder() {
  return prefix() + "/tmp/kelvanefsmount";
}

std::string hiddenMountPoint() {
  return prefix() + "/tmp/kelvanefsmount/.mnt";
}

std::string lastPathComponent(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  const size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || path.size() == 1) return std::string(path);
  return std::string(path.substr(slash + 1));
}

std::string appendPathComponent(std::string_view path, std::string_view component) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  while (component.starts_with('/')) component.remove_prefix(1);
  if (component.empty()) return std::string(path);
  std::string joined(path);
  if (!joined.ends_with('/')) joined += '/';
  return joined.append(component);
}

}  // namespace kelvane::paths

// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/shim_environment.h"

#include <cstdlib>
#include <string_view>

namespace kelvane::virtualdrive {
namespace {

constexpr int kLastDevice = 31;

/// libburn looks for drives under these names only.
bool isDriveName(std::string_view device) {
  constexpr std::string_view kStem = "/dev/sr";
  if (!device.starts_with(kStem)) return false;
  const auto digits = device.substr(kStem.size());
  if (digits.empty() || digits.size() > 2) return false;
  if (digits.find_first_not_of("0123456789") != std::string_view::npos) return false;
  return std::atoi(digits.data()) <= kLastDevice;
}

std::string behind(const std::string& first, const char* variable, char separator) {
  const char* rest = std::getenv(variable);
  if (rest == nullptr || *rest == '\0') return first;
  return first + separator + rest;
}

}  // namespace

std::optional<std::vector<EnvironmentVariable>> shimEnvironment(
    const std::filesystem::path& libexec, const std::filesystem::path& disc,
    const std::string& device, std::string* error) {
  std::error_code failure;
  const auto library = std::filesystem::absolute(libexec / "kelvane-drive-shim.so", failure);
  if (!std::filesystem::exists(library, failure)) {
    *error = "The library that shows the drive to programs is missing: " + library.string();
    return std::nullopt;
  }
  if (library.string().find_first_of(" :") != std::string::npos) {
    *error = "The library " + library.string() +
             " cannot be preloaded: its path holds a space or a colon.";
    return std::nullopt;
  }
  if (!isDriveName(device)) {
    *error = device + " is not the name of an optical drive (/dev/sr0 to /dev/sr31).";
    return std::nullopt;
  }
  std::vector<EnvironmentVariable> variables{
      {"LD_PRELOAD", behind(library.string(), "LD_PRELOAD", ':')},
      {"KELVANE_SHIM_DISC", std::filesystem::absolute(disc, failure).string()},
      {"KELVANE_SHIM_DEVICE", device}};
#ifdef __SANITIZE_ADDRESS__
  // The library is built without the sanitizers and comes before their runtime in our own programs.
  variables.push_back({"ASAN_OPTIONS", behind("verify_asan_link_order=0", "ASAN_OPTIONS", ':')});
#endif
  return variables;
}

}  // namespace kelvane::virtualdrive

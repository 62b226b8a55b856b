// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_claim.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace kelvane {
namespace {

std::optional<int> numberIn(std::string_view text) {
  int number = -1;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

bool isDescriptorOf(int descriptor, const std::string& node) {
  struct stat opened = {};
  struct stat named = {};
  return fstat(descriptor, &opened) == 0 && stat(node.c_str(), &named) == 0 &&
         S_ISBLK(opened.st_mode) && S_ISBLK(named.st_mode) && opened.st_rdev == named.st_rdev;
}

}  // namespace

std::unique_ptr<DriveClaim> DriveClaim::take(const std::string& node) {
  const int descriptor = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_EXCL | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  return std::unique_ptr<DriveClaim>(new DriveClaim(descriptor));
}

DriveClaim::~DriveClaim() {
  close(descriptor_);
}

std::optional<int> inheritedClaim(const std::string& node) {
  const char* text = std::getenv(kInheritedClaimVariable);
  const auto descriptor = numberIn(text == nullptr ? "" : text);
  if (!descriptor || !isDescriptorOf(*descriptor, node)) return std::nullopt;
  return descriptor;
}

void endInheritedClaimAtExec(const std::string& node) {
  if (const auto descriptor = inheritedClaim(node)) fcntl(*descriptor, F_SETFD, FD_CLOEXEC);
}

}  // namespace kelvane

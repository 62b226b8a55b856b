// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_claim.h"

#include <fcntl.h>
#include <unistd.h>

namespace kelvane {

std::unique_ptr<DriveClaim> DriveClaim::take(const std::string& node) {
  const int descriptor = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_EXCL | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  return std::unique_ptr<DriveClaim>(new DriveClaim(descriptor));
}

DriveClaim::~DriveClaim() {
  close(descriptor_);
}

}  // namespace kelvane

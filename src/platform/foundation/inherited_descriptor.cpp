// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/inherited_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <mutex>

namespace kelvane {
namespace {

struct Registry {
  std::mutex mutex;
  std::vector<int> descriptors;
};

Registry& registry() {
  static Registry shared;
  return shared;
}

}  // namespace

InheritedDescriptor::InheritedDescriptor(int descriptor)
    : copy_(fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
  if (copy_ < 0) return;
  const std::lock_guard lock(registry().mutex);
  registry().descriptors.push_back(copy_);
}

InheritedDescriptor::~InheritedDescriptor() {
  if (copy_ < 0) return;
  const std::lock_guard lock(registry().mutex);
  std::erase(registry().descriptors, copy_);
  close(copy_);
}

std::vector<int> InheritedDescriptor::all() {
  const std::lock_guard lock(registry().mutex);
  return registry().descriptors;
}

}  // namespace kelvane

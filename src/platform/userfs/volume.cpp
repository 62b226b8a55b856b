// SPDX-License-Identifier: GPL-2.0-or-later
// Start and end of a volume, its capacity, and what several requests share.
#include "platform/userfs/volume.h"

#include <algorithm>
#include <ctime>

namespace kelvane::userfs {
namespace {

// The unit of block counts in statfs: a sector of the disc.
constexpr unsigned long kBlock = 2048;

// What the kernel may do for us, where it can.
constexpr unsigned kWanted = FUSE_CAP_ASYNC_READ | FUSE_CAP_ATOMIC_O_TRUNC | FUSE_CAP_SPLICE_WRITE |
                             FUSE_CAP_SPLICE_MOVE | FUSE_CAP_READDIRPLUS | FUSE_CAP_ASYNC_DIO |
                             FUSE_CAP_PARALLEL_DIROPS | FUSE_CAP_CACHE_SYMLINKS |
                             FUSE_CAP_EXPLICIT_INVAL_DATA;

}  // namespace

Volume::Volume(GMUserFileSystemDelegate* delegate, const MountOptions& options,
               KernelCaches::NameInvalidation nameInvalidation)
    : delegate_(delegate),
      caches_(nameInvalidation),
      missingNameLifetime_(options.remembersMissingNames ? KernelCaches::kLifetime : 0) {
  clock_gettime(CLOCK_REALTIME, &mountTime_);
}

Volume::~Volume() {
  releaseEverything();
}

void Volume::releaseEverything() {
  caches_.stop();
  while (!openFiles_.empty()) closeOpenFile(*openFiles_.begin());
  for (OpenDirectory* directory : openDirectories_) delete directory;
  openDirectories_.clear();
}

void Volume::init(fuse_conn_info* connection) {
  // The kernel keeps pages although a file's time has changed, since all writes come through it
  // (no AUTO_INVAL_DATA), and takes set-user-ID bits away by itself (no HANDLE_KILLPRIV).
  connection->want = connection->capable & kWanted;
  isInitialised_ = true;
}

void Volume::statfs(fuse_req_t request) {
  PosixError error;
  const auto attributes = delegate_->attributesOfFileSystemForPath("/", &error);
  if (!attributes.has_value()) {
    fuse_reply_err(request, numberOf(error, EIO));
    return;
  }
  const bool isDeficit = attributes->NSFileSystemFreeSize > attributes->NSFileSystemSize;
  struct statvfs capacity = {};
  capacity.f_bsize = kBlock;
  capacity.f_frsize = kBlock;
  capacity.f_blocks = attributes->NSFileSystemSize / kBlock;
  capacity.f_bfree = isDeficit ? 0 : attributes->NSFileSystemFreeSize / kBlock;
  capacity.f_bavail = capacity.f_bfree;
  capacity.f_files = attributes->NSFileSystemNodes;
  capacity.f_ffree = attributes->NSFileSystemFreeNodes;
  capacity.f_favail = capacity.f_ffree;
  capacity.f_namemax = NAME_MAX;
  fuse_reply_statfs(request, &capacity);
}

// An item was made in `parent`: where that was only readable, writable directories now stand at its
// path and the paths above, with attributes of their own.
void Volume::parentsBecameWritable(Node* parent) {
  for (Node* node = parent; node != nullptr; node = node->parent) {
    if (node->shownOrigin == ItemOrigin::Writable) return;
    node->shownOrigin = ItemOrigin::Writable;
    caches_.forgetAttributes(nodes_.numberOf(node));
  }
}

}  // namespace kelvane::userfs

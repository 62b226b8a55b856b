// SPDX-License-Identifier: GPL-2.0-or-later
// Construction, and what all operations share.
#include "overlayfs/burn_fs_delegate.h"

#include <unistd.h>

#include <limits>
#include <utility>

#include "platform/foundation/notification_center.h"
#include "platform/foundation/paths.h"

namespace kelvane {
namespace {

// Less than this free and nothing can be added.
constexpr int64_t kLeastFreeSpace = 4096;

// Whole megabytes, cut toward zero; what no disc can have counts as 0.
int64_t bytesOfMegabytes(std::optional<double> megabytes) {
  constexpr double kLimit = static_cast<double>(std::numeric_limits<int64_t>::max() >> 20);
  if (!megabytes.has_value() || !(*megabytes > -kLimit && *megabytes < kLimit)) return 0;
  return static_cast<int64_t>(*megabytes) * (int64_t{1} << 20);
}

}  // namespace

BurnFSDelegate::BurnFSDelegate(std::string tmpPath, std::optional<std::string> cdPath,
                               const OverlayInfo& infoDict)
    : tmpDirPath(std::move(tmpPath)),
      mountPath(std::move(cdPath)),
      totalbytes(bytesOfMegabytes(infoDict.totalMB)),
      usedbytes(bytesOfMegabytes(infoDict.usedMB)) {
  mkdir(tmpDirPath.c_str(), S_IRWXU);
  // One of our own that an earlier mount left may be wider open than ours are.
  const auto status = fm.attributesOfItem(tmpDirPath);
  if (status.has_value() && S_ISDIR(status->st_mode) && status->st_uid == geteuid()) {
    chmod(tmpDirPath.c_str(), S_IRWXU);
  }
}

BurnFSDelegate::~BurnFSDelegate() = default;

int64_t BurnFSDelegate::localusedbytes() const {
  return localusedbytes_;
}

OverlayChanges BurnFSDelegate::changes() const {
  return {{hideArray.paths().begin(), hideArray.paths().end()}, movedItems_};
}

bool BurnFSDelegate::overlayDirectoryIsOwn() const {
  const auto status = fm.attributesOfItem(tmpDirPath);
  return status.has_value() && S_ISDIR(status->st_mode) && status->st_uid == geteuid() &&
         (status->st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

std::string BurnFSDelegate::overlayPath(std::string_view volumePath) const {
  return paths::appendPathComponent(tmpDirPath, volumePath);
}

std::string BurnFSDelegate::discPath(std::string_view volumePath) const {
  return paths::appendPathComponent(*mountPath, volumePath);
}

// Whether the disc has the item: a final link is not followed, nor one above that a directory of
// the overlay shadows.
bool BurnFSDelegate::discHasItem(const std::string& volumePath) const {
  return mountPath.has_value() && !isCutOff(volumePath) &&
         fm.attributesOfItem(discPath(volumePath)).has_value();
}

// Whether one of the directories above the item stands in the place of a link of the disc. The
// disc's path of the item would lead through the link, out of the disc perhaps.
bool BurnFSDelegate::isCutOff(std::string_view volumePath) const {
  if (shadowedLinks_.empty()) return false;
  for (size_t slash = volumePath.rfind('/'); slash != 0 && slash != std::string_view::npos;
       slash = volumePath.rfind('/', slash - 1)) {
    if (shadowedLinks_.contains(std::string(volumePath.substr(0, slash)))) return true;
  }
  return false;
}

// Called for a path where the overlay has got an item.
void BurnFSDelegate::cutOffDiscLink(const std::string& volumePath) {
  if (!mountPath.has_value()) return;
  const auto inOverlay = fm.attributesOfItem(overlayPath(volumePath));
  if (!inOverlay.has_value() || !S_ISDIR(inOverlay->st_mode)) return;
  const auto onDisc = fm.attributesOfItem(discPath(volumePath));
  if (onDisc.has_value() && S_ISLNK(onDisc->st_mode)) shadowedLinks_.insert(volumePath);
}

int64_t BurnFSDelegate::freeOverlaySpace() const {
  return totalbytes - usedbytes - localusedbytes_;
}

bool BurnFSDelegate::hasSpace() const {
  return freeOverlaySpace() >= kLeastFreeSpace;
}

void BurnFSDelegate::postSizeChanged() {
  NotificationCenter::defaultCenter().post(kKelvaneFSSizeChanged, this);
}

}  // namespace kelvane

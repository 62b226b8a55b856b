// SPDX-License-Identifier: GPL-2.0-or-later
// What becomes of the hide list when the volume goes.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "overlayfs/burn_fs_delegate.h"
#include "overlayfs/hide_pattern.h"
#include "overlayfs/local_file_handle.h"
#include "platform/foundation/paths.h"

namespace kelvane {
namespace {

// What a desktop leaves on a volume, in the order of removal.
constexpr std::string_view kHousekeeping[] = {".TemporaryItems", "._.TemporaryItems", ".Trashes",
                                              "._.Trashes"};

}  // namespace

void BurnFSDelegate::willUnmount() {
  std::string text;
  for (const std::string& deleted : hideArray.paths()) {
    if (!text.empty()) text += '\n';
    text += hidePattern(makePlaceholder(deleted));
  }
  if (!writeHideListFile(text)) hideListIsWhole_ = false;
  for (const std::string_view name : kHousekeeping) fm.removeItem(overlayPath(name));
}

// Whether one of the directories above the item has become a link in the overlay.
bool BurnFSDelegate::isBehindOverlayLink(std::string_view volumePath) const {
  for (size_t slash = volumePath.rfind('/'); slash != 0 && slash != std::string_view::npos;
       slash = volumePath.rfind('/', slash - 1)) {
    const auto status = fm.attributesOfItem(overlayPath(volumePath.substr(0, slash)));
    if (status.has_value() && S_ISLNK(status->st_mode)) return true;
  }
  return false;
}

std::string BurnFSDelegate::makePlaceholder(const std::string& volumePath) {
  std::string placeholder = overlayPath(volumePath);
  // The link stands in the new session in the place of the directory, so that nothing of that is to
  // be seen. What the link leads to is the user's.
  if (isBehindOverlayLink(volumePath)) return placeholder;
  fm.removeItem(placeholder);
  const int descriptor = createOverlayFile(volumePath, {});
  if (descriptor >= 0) {
    close(descriptor);
  } else if (errno != ENOTDIR) {
    // Below an item that was deleted as a whole there is nothing to be hidden.
    hideListIsWhole_ = false;
  }
  return placeholder;
}

bool BurnFSDelegate::writeHideListFile(const std::string& text) {
  // The folder is everybody's: a link or another user's file at this name is not written to.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const std::string path = paths::hideListFile(tmpDirPath);
  const int descriptor = open(path.c_str(), kFlags, S_IRUSR | S_IWUSR);
  if (descriptor < 0) return false;
  const LocalFileHandle file(descriptor, LocalFileHandle::Access::ReadWrite);
  struct stat status = {};
  const bool isOwn = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                     status.st_uid == geteuid() && status.st_nlink == 1;
  if (!isOwn || ftruncate(descriptor, 0) != 0) return false;
  if (file.write(text.data(), text.size(), 0, nullptr)) return true;
  // A part of the list would hide a part of what was deleted.
  unlink(path.c_str());
  return false;
}

}  // namespace kelvane

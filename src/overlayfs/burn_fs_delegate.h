// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "overlayfs/hide_list.h"
#include "overlayfs/local_file_manager.h"
#include "overlayfs/overlay_changes.h"
#include "platform/userfs/gm_user_file_system_delegate.h"

namespace kelvane {

/// Posted by the delegate, as the object, after a write and after the removal of an overlay item:
/// the space in use has changed. Synchronously, on the file system's thread.
inline constexpr char kKelvaneFSSizeChanged[] = "KelvaneFSSizeChanged";

/// Capacity and used space of the disc in megabytes (1048576 bytes). A missing value counts as 0; a
/// fraction of a megabyte is cut off.
struct OverlayInfo {
  std::optional<double> totalMB;
  std::optional<double> usedMB;
};

/// The writable volume over a disc: merges the hidden disc mount with the overlay directory, which
/// takes everything that is new or changed, and remembers the disc items that were deleted.
///
/// An item of the overlay directory shadows the disc's item of the same path; a path on the hide
/// list does not exist, even though the disc still has it. "Has the item" below means that the file
/// manager gives attributes for the full path (a final symbolic link is not followed); "a file
/// exists" means its test of that name, which follows links.
///
/// No locks: the file system calls one operation at a time. `localusedbytes` may be read on any
/// thread.
class BurnFSDelegate final : public GMUserFileSystemDelegate {
 public:
  /// Makes the overlay directory `tmpPath` (not its parents), readable by its owner alone; an
  /// existing one is reused. `cdPath` is the hidden disc mount, absent for a blank disc.
  BurnFSDelegate(std::string tmpPath, std::optional<std::string> cdPath,
                 const OverlayInfo& infoDict);

  /// Deletes nothing on disk.
  ~BurnFSDelegate() override;

  /// Bytes written through the volume since it was mounted, less those of removed overlay items.
  /// Overwritten bytes count again; it may be negative.
  int64_t localusedbytes() const;

  /// The bytes that were free before anything was written.
  int64_t spaceAtFirst() const { return totalbytes - usedbytes; }

  /// Whether the overlay directory is a directory of this user's own, which nobody else can read. A
  /// mount workflow asks before it mounts: "/tmp" is everybody's.
  bool overlayDirectoryIsOwn() const;

  // Lookup and listing.
  std::vector<std::string> contentsOfDirectoryAtPath(const std::string& path,
                                                     PosixError* error) override;

  // Content.
  bool openFileAtPath(const std::string& path, int mode, std::unique_ptr<UserData>* userData,
                      PosixError* error) override;
  /// Returns the requested size, however much was read.
  int32_t readFileAtPath(const std::string& path, UserData* userData, char* buffer, size_t size,
                         off_t offset, PosixError* error) override;
  void releaseFileAtPath(const std::string& path, std::unique_ptr<UserData> userData) override;

  // Creation, writing, moving, removal.
  bool createDirectoryAtPath(const std::string& path, const AttributeChanges& attributes,
                             PosixError* error) override;
  bool createFileAtPath(const std::string& path, const AttributeChanges& attributes,
                        std::unique_ptr<UserData>* userData, PosixError* error) override;
  int32_t writeFileAtPath(const std::string& path, UserData* userData, const char* buffer,
                          size_t size, off_t offset, PosixError* error) override;
  /// True with an error set where the overlay's rename fails. The disc's own version of a moved
  /// overlay item becomes visible again. A destination that begins with "/.Trashes" deletes.
  bool moveItemAtPath(const std::string& source, const std::string& destination,
                      PosixError* error) override;
  bool removeItemAtPath(const std::string& path, PosixError* error) override;

  // Links and attributes.
  /// The link stores the overlay directory's path and `destination`, without a separator between.
  bool createSymbolicLinkAtPath(const std::string& path, const std::string& destination,
                                PosixError* error) override;
  /// The link's text without as many characters as the overlay directory's path has.
  std::optional<std::string> destinationOfSymbolicLinkAtPath(const std::string& path,
                                                             PosixError* error) override;
  bool setAttributes(const AttributeChanges& attributes, const std::string& path,
                     UserData* userData, PosixError* error) override;
  std::optional<ItemAttributes> attributesOfItemAtPath(const std::string& path, UserData* userData,
                                                       PosixError* error) override;
  std::optional<FileSystemAttributes> attributesOfFileSystemForPath(const std::string& path,
                                                                    PosixError* error) override;

  // Extended attributes: not supported, ENOSYS.
  std::optional<std::vector<std::string>> extendedAttributesOfItemAtPath(
      const std::string& path, PosixError* error) override;
  std::optional<std::string> valueOfExtendedAttribute(const std::string& name,
                                                      const std::string& path, off_t position,
                                                      PosixError* error) override;
  bool setExtendedAttribute(const std::string& name, const std::string& path,
                            const std::string& value, off_t position, int options,
                            PosixError* error) override;
  bool removeExtendedAttribute(const std::string& name, const std::string& path,
                               PosixError* error) override;

  /// Puts an empty placeholder at the place of every deleted item, writes the hide-list file
  /// (paths::hideListFile) and removes the desktop's housekeeping folders from the overlay
  /// directory. Where the file cannot be written whole, none is left.
  ///
  /// The file is UTF-8: one pattern of mkisofs a line (see hide_pattern.h), in the order of the
  /// deletions, duplicates included, no line feed after the last; empty where nothing was deleted.
  void willUnmount() override;

  /// Whether `willUnmount` could do all that: without it, deleted items would come back in a
  /// session that is burned now. Read after the unmount.
  bool hideListIsWhole() const { return hideListIsWhole_; }

  /// What was changed beside what the overlay directory shows. Read after the unmount.
  OverlayChanges changes() const;

 private:
  std::string overlayPath(std::string_view volumePath) const;
  std::string discPath(std::string_view volumePath) const;  // Only where mountPath is set.
  bool discHasItem(const std::string& volumePath) const;
  bool isCutOff(std::string_view volumePath) const;
  void cutOffDiscLink(const std::string& volumePath);
  int64_t freeOverlaySpace() const;
  bool hasSpace() const;
  bool makeOverlayParent(const std::string& volumePath);
  int createOverlayFile(const std::string& volumePath, const AttributeChanges& attributes);
  bool renameInOverlay(const std::string& from, const std::string& to,
                       const std::string& destination);
  void widenPermissions(const std::string& overlayItem);
  bool copyUp(const std::string& source, const std::string& destination);
  void restoreOverlayDirectory();
  bool isBehindOverlayLink(std::string_view volumePath) const;
  std::string makePlaceholder(const std::string& volumePath);
  bool writeHideListFile(const std::string& text);
  void postSizeChanged();

  std::string tmpDirPath;
  std::optional<std::string> mountPath;
  LocalFileManager fm;
  HideList hideArray;
  MovedItems movedItems_;
  // Where a directory of the overlay shadows a link of the disc: what the link leads to is not in
  // it.
  std::unordered_set<std::string> shadowedLinks_;
  bool hideListIsWhole_ = true;
  int64_t totalbytes = 0;
  int64_t usedbytes = 0;
  std::atomic<int64_t> localusedbytes_ = 0;  // Written on the file system's thread only.
};

}  // namespace kelvane

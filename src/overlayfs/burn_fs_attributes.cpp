// SPDX-License-Identifier: GPL-2.0-or-later
// Lookup, listing, and the attributes of items and of the volume.
#include <cerrno>
#include <unordered_set>

#include "overlayfs/burn_fs_delegate.h"
#include "platform/foundation/paths.h"

namespace kelvane {
namespace {

// Read and write for owner, group and others: every disc item looks writable.
constexpr mode_t kReadAndWriteForAll = 0666;

constexpr uint64_t kFreeNodes = 10000000;

}  // namespace

std::vector<std::string> BurnFSDelegate::contentsOfDirectoryAtPath(const std::string& path,
                                                                   PosixError* /*error*/) {
  std::vector<std::string> names;
  std::unordered_set<std::string> listed;
  if (mountPath.has_value() && !isCutOff(path + "/")) {
    for (std::string& name : fm.contentsOfDirectory(discPath(path))) {
      if (hideArray.contains(paths::appendPathComponent(path, name))) continue;
      listed.insert(name);
      names.push_back(std::move(name));
    }
  }
  for (std::string& name : fm.contentsOfDirectory(overlayPath(path))) {
    if (!listed.contains(name)) names.push_back(std::move(name));
  }
  return names;
}

std::optional<ItemAttributes> BurnFSDelegate::attributesOfItemAtPath(const std::string& path,
                                                                     UserData* /*userData*/,
                                                                     PosixError* /*error*/) {
  if (path.starts_with("/.Trashes")) return ItemAttributes{};
  if (hideArray.contains(path)) return std::nullopt;
  if (const auto status = fm.attributesOfItem(overlayPath(path))) {
    return ItemAttributes{*status, ItemOrigin::Writable};
  }
  if (mountPath.has_value() && !isCutOff(path)) {
    if (auto status = fm.attributesOfItem(discPath(path))) {
      status->st_mode |= kReadAndWriteForAll;
      return ItemAttributes{*status, ItemOrigin::ReadOnly};
    }
  }
  return std::nullopt;
}

std::optional<FileSystemAttributes> BurnFSDelegate::attributesOfFileSystemForPath(
    const std::string& /*path*/, PosixError* /*error*/) {
  FileSystemAttributes attributes;
  attributes.NSFileSystemSize = static_cast<uint64_t>(totalbytes);
  attributes.NSFileSystemFreeSize = static_cast<uint64_t>(freeOverlaySpace());
  attributes.NSFileSystemNodes = 0;
  attributes.NSFileSystemFreeNodes = kFreeNodes;
  return attributes;
}

bool BurnFSDelegate::setAttributes(const AttributeChanges& attributes, const std::string& path,
                                   UserData* /*userData*/, PosixError* /*error*/) {
  if (!fm.setAttributes(attributes, overlayPath(path))) return false;
  // Of the attributes, the size alone is content.
  if (attributes.NSFileSize) movedItems_.noteChange(path);
  return true;
}

std::optional<std::vector<std::string>> BurnFSDelegate::extendedAttributesOfItemAtPath(
    const std::string& /*path*/, PosixError* error) {
  setError(error, ENOSYS);
  return std::nullopt;
}

std::optional<std::string> BurnFSDelegate::valueOfExtendedAttribute(const std::string& /*name*/,
                                                                    const std::string& /*path*/,
                                                                    off_t /*position*/,
                                                                    PosixError* error) {
  setError(error, ENOSYS);
  return std::nullopt;
}

bool BurnFSDelegate::setExtendedAttribute(const std::string& /*name*/, const std::string& /*path*/,
                                          const std::string& /*value*/, off_t /*position*/,
                                          int /*options*/, PosixError* error) {
  setError(error, ENOSYS);
  return false;
}

bool BurnFSDelegate::removeExtendedAttribute(const std::string& /*name*/,
                                             const std::string& /*path*/, PosixError* error) {
  setError(error, ENOSYS);
  return false;
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "userfs/memory_delegate.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kelvane::tests {
namespace {

class MemoryFile : public UserData {
 public:
  explicit MemoryFile(bool writable) : writable_(writable) {}
  bool isWritable() const override { return writable_; }

 private:
  bool writable_;
};

std::string parentOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

MemoryDelegate::MemoryDelegate() {
  addDirectory("/");
}

void MemoryDelegate::add(const std::string& path, const std::string& content, ItemOrigin origin) {
  const std::lock_guard lock(mutex_);
  entries_[path] = {S_IFREG | 0644, content, origin, {}, ++lastNumber_};
}

void MemoryDelegate::addDirectory(const std::string& path) {
  const std::lock_guard lock(mutex_);
  entries_[path] = {S_IFDIR | 0755, {}, ItemOrigin::Writable, {}, ++lastNumber_};
}

std::string MemoryDelegate::contentOfItem(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(path);
  return found == entries_.end() ? "<missing>" : found->second.content;
}

bool MemoryDelegate::fails(PosixError* error) const {
  if (failsAll && failureNumber != 0) setError(error, failureNumber);
  return failsAll;
}

std::vector<std::string> MemoryDelegate::contentsOfDirectoryAtPath(const std::string& path,
                                                                   PosixError* /*error*/) {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> names;
  for (const auto& [item, entry] : entries_) {
    if (item != "/" && parentOf(item) == path) names.push_back(item.substr(item.rfind('/') + 1));
  }
  return names;
}

bool MemoryDelegate::openFileAtPath(const std::string& path, int /*mode*/,
                                    std::unique_ptr<UserData>* userData, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error) || !entries_.contains(path)) return false;
  *userData = std::make_unique<MemoryFile>(entries_[path].origin == ItemOrigin::Writable);
  ++openFiles;
  return true;
}

int32_t MemoryDelegate::readFileAtPath(const std::string& path, UserData* /*userData*/,
                                       char* buffer, size_t size, off_t offset, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return static_cast<int32_t>(size);
  const std::string& content = entries_[path].content;
  const auto begin = std::min(static_cast<size_t>(offset), content.size());
  const size_t count = std::min(size, content.size() - begin);
  std::memcpy(buffer, content.data() + begin, count);
  return static_cast<int32_t>(overstatesReads ? size + 1000 : count);
}

void MemoryDelegate::releaseFileAtPath(const std::string& /*path*/,
                                       std::unique_ptr<UserData> userData) {
  if (userData != nullptr) --openFiles;
}

bool MemoryDelegate::createDirectoryAtPath(const std::string& path,
                                           const AttributeChanges& attributes, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return false;
  if (entries_.contains(path)) return S_ISDIR(entries_[path].mode);
  addDirectory(path);
  entries_[path].mode = S_IFDIR | attributes.NSFilePosixPermissions.value_or(0755);
  return true;
}

bool MemoryDelegate::createFileAtPath(const std::string& path, const AttributeChanges& attributes,
                                      std::unique_ptr<UserData>* userData, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return false;
  add(path, {});
  entries_[path].mode = S_IFREG | attributes.NSFilePosixPermissions.value_or(0644);
  return openFileAtPath(path, 0, userData, error);
}

int32_t MemoryDelegate::writeFileAtPath(const std::string& path, UserData* /*userData*/,
                                        const char* buffer, size_t size, off_t offset,
                                        PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return 0;
  std::string& content = entries_[path].content;
  content.resize(std::max(content.size(), static_cast<size_t>(offset) + size));
  std::memcpy(content.data() + offset, buffer, size);
  return static_cast<int32_t>(size);
}

bool MemoryDelegate::moveItemAtPath(const std::string& source, const std::string& destination,
                                    PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (moveErrorWithSuccess != 0) {
    setError(error, moveErrorWithSuccess);
    return true;
  }
  if (fails(error) || !entries_.contains(source)) return false;
  entries_[destination] = entries_[source];
  entries_.erase(source);
  return true;
}

bool MemoryDelegate::removeItemAtPath(const std::string& path, PosixError* error) {
  const std::lock_guard lock(mutex_);
  return !fails(error) && entries_.erase(path) == 1;
}

bool MemoryDelegate::createSymbolicLinkAtPath(const std::string& path,
                                              const std::string& destination, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return false;
  entries_[path] = {S_IFLNK | 0777, destination, ItemOrigin::Writable, {}, ++lastNumber_};
  return true;
}

std::optional<std::string> MemoryDelegate::destinationOfSymbolicLinkAtPath(const std::string& path,
                                                                           PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return std::nullopt;
  return contentOfItem(path);
}

bool MemoryDelegate::setAttributes(const AttributeChanges& attributes, const std::string& path,
                                   UserData* /*userData*/, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return false;
  Entry& entry = entries_[path];
  if (attributes.NSFilePosixPermissions) {
    entry.mode = (entry.mode & S_IFMT) | *attributes.NSFilePosixPermissions;
  }
  if (attributes.NSFileSize) entry.content.resize(static_cast<size_t>(*attributes.NSFileSize));
  return true;
}

std::optional<ItemAttributes> MemoryDelegate::attributesOfItemAtPath(const std::string& path,
                                                                     UserData* /*userData*/,
                                                                     PosixError* /*error*/) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(path);
  if (found == entries_.end()) return std::nullopt;
  struct stat status = {};
  status.st_mode = found->second.mode;
  status.st_size = static_cast<off_t>(found->second.content.size());
  status.st_ino = found->second.number;
  status.st_nlink = 1;
  status.st_uid = geteuid();
  return ItemAttributes{status, found->second.origin};
}

std::optional<FileSystemAttributes> MemoryDelegate::attributesOfFileSystemForPath(
    const std::string& /*path*/, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (fails(error)) return std::nullopt;
  return FileSystemAttributes{1 << 30, 1 << 29, 0, 10000000};
}

std::optional<std::vector<std::string>> MemoryDelegate::extendedAttributesOfItemAtPath(
    const std::string& path, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (!extendedAttributes) {
    setError(error, ENOSYS);
    return std::nullopt;
  }
  std::vector<std::string> names;
  for (const auto& [name, value] : entries_[path].extended) names.push_back(name);
  return names;
}

std::optional<std::string> MemoryDelegate::valueOfExtendedAttribute(const std::string& name,
                                                                    const std::string& path,
                                                                    off_t /*position*/,
                                                                    PosixError* /*error*/) {
  const std::lock_guard lock(mutex_);
  const auto& extended = entries_[path].extended;
  const auto found = extended.find(name);
  return found == extended.end() ? std::nullopt : std::optional(found->second);
}

bool MemoryDelegate::setExtendedAttribute(const std::string& name, const std::string& path,
                                          const std::string& value, off_t /*position*/,
                                          int /*options*/, PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (!extendedAttributes) {
    setError(error, ENOSYS);
    return false;
  }
  entries_[path].extended[name] = value;
  return true;
}

bool MemoryDelegate::removeExtendedAttribute(const std::string& name, const std::string& path,
                                             PosixError* error) {
  const std::lock_guard lock(mutex_);
  if (entries_[path].extended.erase(name) == 1) return true;
  setError(error, ENODATA);
  return false;
}

void MemoryDelegate::willUnmount() {
  ++willUnmountCalls;
}

}  // namespace kelvane::tests

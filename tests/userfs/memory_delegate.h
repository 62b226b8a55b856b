// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <string>

#include "platform/userfs/gm_user_file_system_delegate.h"

namespace kelvane::tests {

/// A delegate that keeps files and directories in memory, gives no descriptors, and fails as told.
class MemoryDelegate : public GMUserFileSystemDelegate {
 public:
  MemoryDelegate();

  void add(const std::string& path, const std::string& content,
           ItemOrigin origin = ItemOrigin::Writable);
  void addDirectory(const std::string& path);
  std::string contentOfItem(const std::string& path) const;

  // How operations fail from now on: return false, and set this number unless it is 0.
  std::atomic<bool> failsAll = false;
  std::atomic<int> failureNumber = 0;
  // A move reports success and sets this number, unless it is 0.
  std::atomic<int> moveErrorWithSuccess = 0;
  // What a read claims to have read beyond what there is.
  std::atomic<bool> overstatesReads = true;

  std::atomic<int> willUnmountCalls = 0;
  std::atomic<int> openFiles = 0;
  std::atomic<bool> extendedAttributes = false;

  std::vector<std::string> contentsOfDirectoryAtPath(const std::string& path,
                                                     PosixError* error) override;
  bool openFileAtPath(const std::string& path, int mode, std::unique_ptr<UserData>* userData,
                      PosixError* error) override;
  int32_t readFileAtPath(const std::string& path, UserData* userData, char* buffer, size_t size,
                         off_t offset, PosixError* error) override;
  void releaseFileAtPath(const std::string& path, std::unique_ptr<UserData> userData) override;
  bool createDirectoryAtPath(const std::string& path, const AttributeChanges& attributes,
                             PosixError* error) override;
  bool createFileAtPath(const std::string& path, const AttributeChanges& attributes,
                        std::unique_ptr<UserData>* userData, PosixError* error) override;
  int32_t writeFileAtPath(const std::string& path, UserData* userData, const char* buffer,
                          size_t size, off_t offset, PosixError* error) override;
  bool moveItemAtPath(const std::string& source, const std::string& destination,
                      PosixError* error) override;
  bool removeItemAtPath(const std::string& path, PosixError* error) override;
  bool createSymbolicLinkAtPath(const std::string& path, const std::string& destination,
                                PosixError* error) override;
  std::optional<std::string> destinationOfSymbolicLinkAtPath(const std::string& path,
                                                             PosixError* error) override;
  bool setAttributes(const AttributeChanges& attributes, const std::string& path,
                     UserData* userData, PosixError* error) override;
  std::optional<ItemAttributes> attributesOfItemAtPath(const std::string& path, UserData* userData,
                                                       PosixError* error) override;
  std::optional<FileSystemAttributes> attributesOfFileSystemForPath(const std::string& path,
                                                                    PosixError* error) override;
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
  void willUnmount() override;

 private:
  struct Entry {
    mode_t mode = 0;
    std::string content;
    ItemOrigin origin = ItemOrigin::Writable;
    std::map<std::string, std::string> extended;
    ino_t number = 0;
  };

  bool fails(PosixError* error) const;

  // Tests look at the entries while the file system serves.
  mutable std::recursive_mutex mutex_;
  std::map<std::string, Entry> entries_;
  ino_t lastNumber_ = 1;
};

}  // namespace kelvane::tests

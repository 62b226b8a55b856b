// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/posix_error.h"

namespace kelvane {

/// The value that a delegate keeps for one open file: its "user data".
///
/// The file system owns it from the open (or creation) to the release and hands it back with every
/// operation on the open file.
class UserData {
 public:
  virtual ~UserData() = default;

  /// The descriptor behind the open file, or -1 where there is none. The file system reads through
  /// it without a copy; it stays the user data's own.
  virtual int fileDescriptor() const { return -1; }

  /// Whether a write through this user data can succeed at all.
  virtual bool isWritable() const { return true; }
};

/// Where an item's content stands.
enum class ItemOrigin {
  Writable,  ///< Where new and changed items are kept.
  ReadOnly,  ///< Beneath, where nothing can be changed.
};

/// An item's attributes as the local file manager gives them.
struct ItemAttributes {
  /// The item's own status (of a symbolic link: the link's). Absent is the empty dictionary: the
  /// item exists and nothing more is known of it.
  std::optional<struct stat> status;
  ItemOrigin origin = ItemOrigin::Writable;

  bool isEmpty() const { return !status.has_value(); }
};

/// Attributes to give to an item; an absent one stays as it is.
struct AttributeChanges {
  std::optional<mode_t> NSFilePosixPermissions;  ///< Permission bits only (octal 07777).
  std::optional<uid_t> NSFileOwnerAccountID;
  std::optional<gid_t> NSFileGroupOwnerAccountID;
  std::optional<off_t> NSFileSize;  ///< Bytes; cuts the file or fills it up with zeros.
  std::optional<timespec> NSFileAccessDate;
  std::optional<timespec> NSFileModificationDate;
};

/// Capacity of a file system.
struct FileSystemAttributes {
  uint64_t NSFileSystemSize = 0;      ///< Bytes.
  uint64_t NSFileSystemFreeSize = 0;  ///< Bytes; a deficit shows as a number near 2^64.
  uint64_t NSFileSystemNodes = 0;
  uint64_t NSFileSystemFreeNodes = 0;
};

/// What stands behind a GMUserFileSystem: the answers to its operations.
///
/// Paths are relative to the volume and begin with "/", the root being "/"; they are bytes as the
/// kernel gives them and need not be valid UTF-8. Operations arrive one at a time, on the file
/// system's thread. One that fails returns false or an empty value and may set `error`; where it
/// does not, the file system chooses the number. An operation that reports success and sets an
/// error has failed. `error` may be null.
class GMUserFileSystemDelegate {
 public:
  virtual ~GMUserFileSystemDelegate() = default;

  /// The names in a directory, without "." and "..", each once.
  virtual std::vector<std::string> contentsOfDirectoryAtPath(const std::string& path,
                                                             PosixError* error) = 0;
  /// Opens a file. `mode` is an open(2) access mode.
  virtual bool openFileAtPath(const std::string& path, int mode,
                              std::unique_ptr<UserData>* userData, PosixError* error) = 0;
  /// Reads into `buffer`. The count it returns may exceed what was read: the file system clips it
  /// at the file's size.
  virtual int32_t readFileAtPath(const std::string& path, UserData* userData, char* buffer,
                                 size_t size, off_t offset, PosixError* error) = 0;
  /// Ends the open file.
  virtual void releaseFileAtPath(const std::string& path, std::unique_ptr<UserData> userData) = 0;

  /// Makes a directory, which becomes visible even where an item of that path was removed before.
  /// At an item that stands there already it changes nothing but that.
  virtual bool createDirectoryAtPath(const std::string& path, const AttributeChanges& attributes,
                                     PosixError* error) = 0;
  /// Makes an empty file and opens it.
  virtual bool createFileAtPath(const std::string& path, const AttributeChanges& attributes,
                                std::unique_ptr<UserData>* userData, PosixError* error) = 0;
  /// Returns the count written; 0 or less where it failed.
  virtual int32_t writeFileAtPath(const std::string& path, UserData* userData, const char* buffer,
                                  size_t size, off_t offset, PosixError* error) = 0;
  virtual bool moveItemAtPath(const std::string& source, const std::string& destination,
                              PosixError* error) = 0;
  /// Removes an item, a directory with its contents.
  virtual bool removeItemAtPath(const std::string& path, PosixError* error) = 0;
  virtual bool createSymbolicLinkAtPath(const std::string& path, const std::string& destination,
                                        PosixError* error) = 0;
  virtual std::optional<std::string> destinationOfSymbolicLinkAtPath(const std::string& path,
                                                                     PosixError* error) = 0;
  virtual bool setAttributes(const AttributeChanges& attributes, const std::string& path,
                             UserData* userData, PosixError* error) = 0;
  /// Empty where there is no such item.
  virtual std::optional<ItemAttributes> attributesOfItemAtPath(const std::string& path,
                                                               UserData* userData,
                                                               PosixError* error) = 0;
  virtual std::optional<FileSystemAttributes> attributesOfFileSystemForPath(const std::string& path,
                                                                            PosixError* error) = 0;

  virtual std::optional<std::vector<std::string>> extendedAttributesOfItemAtPath(
      const std::string& path, PosixError* error) = 0;
  virtual std::optional<std::string> valueOfExtendedAttribute(const std::string& name,
                                                              const std::string& path,
                                                              off_t position,
                                                              PosixError* error) = 0;
  /// `options` are the flags of setxattr(2).
  virtual bool setExtendedAttribute(const std::string& name, const std::string& path,
                                    const std::string& value, off_t position, int options,
                                    PosixError* error) = 0;
  virtual bool removeExtendedAttribute(const std::string& name, const std::string& path,
                                       PosixError* error) = 0;

  /// Called once when the volume goes, after the last operation.
  virtual void willUnmount() = 0;
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

#include "platform/userfs/gm_user_file_system_delegate.h"

namespace kelvane {

/// An open local file; closed with the object.
class LocalFileHandle final : public UserData {
 public:
  enum class Access { ReadOnly, ReadWrite };

  /// Takes the descriptor over.
  LocalFileHandle(int descriptor, Access access);
  ~LocalFileHandle() override;
  LocalFileHandle(const LocalFileHandle&) = delete;
  LocalFileHandle& operator=(const LocalFileHandle&) = delete;

  /// For reading and writing; for reading alone where the file's permissions allow no more. Null
  /// where it cannot be opened, or is a directory.
  static std::unique_ptr<LocalFileHandle> forUpdating(const std::string& path, PosixError* error);
  static std::unique_ptr<LocalFileHandle> forReading(const std::string& path, PosixError* error);

  int fileDescriptor() const override { return descriptor_; }
  bool isWritable() const override { return access_ == Access::ReadWrite; }

  /// Reads up to `size` bytes at `offset`; returns the count, and an error where one stopped it.
  size_t read(char* buffer, size_t size, off_t offset, PosixError* error) const;
  /// Writes all of it, or sets the error.
  bool write(const char* buffer, size_t size, off_t offset, PosixError* error) const;

 private:
  int descriptor_;
  Access access_;
};

}  // namespace kelvane

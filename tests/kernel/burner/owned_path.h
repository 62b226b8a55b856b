// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace kelvane::kernelburner {

// The kernel's objects that are made and taken away by paths below its configuration folder
// (configfs). Each is owned, so that what was made last goes first.

/// A folder that was made, and is removed with its owner.
class OwnedFolder {
 public:
  /// Null, with a sentence in `error`, where it cannot be made, or stands there already.
  static std::unique_ptr<OwnedFolder> make(const std::filesystem::path& path, std::string* error);
  ~OwnedFolder();
  OwnedFolder(const OwnedFolder&) = delete;
  OwnedFolder& operator=(const OwnedFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  explicit OwnedFolder(std::filesystem::path path) : path_(std::move(path)) {}

  std::filesystem::path path_;
};

/// A symbolic link that was made, and is removed with its owner.
class OwnedLink {
 public:
  /// Null, with a sentence in `error`, where it cannot be made.
  static std::unique_ptr<OwnedLink> make(const std::filesystem::path& target,
                                         const std::filesystem::path& path, std::string* error);
  ~OwnedLink();
  OwnedLink(const OwnedLink&) = delete;
  OwnedLink& operator=(const OwnedLink&) = delete;

 private:
  explicit OwnedLink(std::filesystem::path path) : path_(std::move(path)) {}

  std::filesystem::path path_;
};

/// Writes `value` to an attribute file in one call, as the kernel wants it. False with a sentence
/// in `error` where it does not take it.
bool writeAttribute(const std::filesystem::path& path, std::string_view value, std::string* error);

/// The first line of an attribute file; empty where it cannot be read.
std::string readAttribute(const std::filesystem::path& path);

}  // namespace kelvane::kernelburner

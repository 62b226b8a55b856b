// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

namespace kelvane {

/// What belongs to this installation of the application: its auxiliary programs, its resources, its
/// version.
///
/// Thread-safe; nothing is cached.
class Bundle {
 public:
  static const Bundle& mainBundle();

  /// The path of the program `name` ("mkisofs", "recorder" …) in the installation's libexec folder,
  /// which lies at
  /// ../libexec/kelvanefs from the running program's folder (or is that folder itself, for the
  /// auxiliary programs). Empty where there is no such executable file.
  std::optional<std::string> pathForAuxiliaryExecutable(const std::string& name) const;

  /// The libexec folder, whether or not it exists.
  std::string auxiliaryFolder() const;

  /// The Qt resource path of "name.type", for example ":/kelvanefs/diskicon.png"; the path of a
  /// file of that name in the libexec folder for a resource that is a program. Empty where there is
  /// neither.
  std::optional<std::string> pathForResource(const std::string& name,
                                             const std::string& type) const;

  /// The version as people read it, for example "0.1.0".
  std::string shortVersionString() const;
};

}  // namespace kelvane

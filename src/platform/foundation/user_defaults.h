// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

namespace kelvane {

/// The user's settings. None is registered beforehand: an absent key reads as NO.
///
/// Kept by QSettings in the user's configuration directory (organisation and application
/// "kelvanefs"). Thread-safe.
class UserDefaults {
 public:
  static UserDefaults& standard();

  /// True where the key holds a true value ("true", "1", "YES"); an absent key or anything else
  /// reads as false.
  bool boolForKey(const std::string& key) const;
  std::optional<std::string> stringForKey(const std::string& key) const;

  /// These two are false where the value could not be stored; others may not have it then.
  bool setBool(bool value, const std::string& key);
  bool setString(const std::string& value, const std::string& key);
  void removeKey(const std::string& key);
};

}  // namespace kelvane

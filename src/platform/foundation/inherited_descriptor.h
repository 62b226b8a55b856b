// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <vector>

namespace kelvane {

/// A descriptor that programs which outlive this one take along: a copy that every child which is
/// started in a session of its own inherits while this object lives.
///
/// Some rights last as long as a descriptor is open, such as that to keep the machine awake. Held
/// so, such a right ends when this process has let go of it and the last of those children has
/// ended, and not before. Children that share our session do not get it. Any thread.
class InheritedDescriptor {
 public:
  /// Copies `descriptor`, which stays the caller's. Where it cannot be copied, nobody inherits it.
  explicit InheritedDescriptor(int descriptor);
  ~InheritedDescriptor();
  InheritedDescriptor(const InheritedDescriptor&) = delete;
  InheritedDescriptor& operator=(const InheritedDescriptor&) = delete;

  /// The copy's number, here and in the child; negative where it could not be copied.
  int number() const { return copy_; }

  /// Those that a child which is started now inherits, by their numbers. All of them are closed by
  /// exec unless the child sees to it that they are not.
  static std::vector<int> all();

 private:
  int copy_;
};

}  // namespace kelvane

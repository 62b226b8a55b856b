// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

namespace kelvane {

/// The claim to a drive's disc: an exclusive descriptor (O_EXCL, open(2)) of its node, beside which
/// the kernel mounts nothing for anybody. It neither locks the tray nor keeps the kernel from
/// asking the drive for events. Ends with the object.
class DriveClaim {
 public:
  /// Null where the disc is mounted, somebody else has claimed it, or the node cannot be opened.
  static std::unique_ptr<DriveClaim> take(const std::string& node);

  ~DriveClaim();
  DriveClaim(const DriveClaim&) = delete;
  DriveClaim& operator=(const DriveClaim&) = delete;

 private:
  explicit DriveClaim(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

}  // namespace kelvane

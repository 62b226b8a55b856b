// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace kelvane {

/// The claim to a drive's disc: an exclusive descriptor (O_EXCL, open(2)) of its node, beside which
/// the kernel mounts nothing for anybody. It neither locks the tray nor keeps the kernel from
/// asking the drive for events. Ends with the object, and with that of the last program which has
/// inherited the descriptor (DriveClaimHandover).
class DriveClaim {
 public:
  /// Null where the disc is mounted, somebody else has claimed it, or the node cannot be opened.
  static std::unique_ptr<DriveClaim> take(const std::string& node);

  ~DriveClaim();
  DriveClaim(const DriveClaim&) = delete;
  DriveClaim& operator=(const DriveClaim&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  explicit DriveClaim(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

/// The environment variable that tells a program the number of the descriptor by which it inherits
/// the claim to the drive that it is to record on.
inline constexpr char kInheritedClaimVariable[] = "KELVANE_DRIVE_CLAIM";

/// The descriptor by which this program has inherited the claim to the drive of `node`, a borrowed
/// one that stays open until the program ends or closes it. Empty where it has not inherited any.
/// While it is open an exclusive descriptor of the node is refused to this program as well.
std::optional<int> inheritedClaim(const std::string& node);

/// Makes the claim to the drive of `node`, where this program has inherited one, end when another
/// program takes its place (execve(2)).
void endInheritedClaimAtExec(const std::string& node);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

namespace burn {
struct burn_drive;
struct burn_drive_info;
}  // namespace burn

namespace kelvane::recorder {

/// libburn, for as long as the object lives. One at a time.
class Libburn {
 public:
  static std::unique_ptr<Libburn> start();
  ~Libburn();
  Libburn(const Libburn&) = delete;
  Libburn& operator=(const Libburn&) = delete;

 private:
  Libburn() = default;
};

/// A drive in our hands: no other program that asks first can use it. Given back, with its disc
/// still in it, when the object is destroyed.
class GrabbedDrive {
 public:
  /// Null where the drive cannot be had; libburn's messages say why.
  static std::unique_ptr<GrabbedDrive> grab(const std::string& devicePath);
  ~GrabbedDrive();
  GrabbedDrive(const GrabbedDrive&) = delete;
  GrabbedDrive& operator=(const GrabbedDrive&) = delete;

  burn::burn_drive* get() const;

 private:
  explicit GrabbedDrive(burn::burn_drive_info* infos) : infos_(infos) {}

  burn::burn_drive_info* infos_;
};

}  // namespace kelvane::recorder

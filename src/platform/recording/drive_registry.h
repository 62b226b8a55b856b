// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kelvane {

class DRDevice;

/// Knows every drive of this process, and owns the DRDevice objects. Main thread only.
class DriveRegistry {
 public:
  /// Whether all of the machine's own drives belong to the list. Batch mode uses only those it was
  /// given.
  enum class RealDrives { Included, Excluded };

  static DriveRegistry& shared();

  DriveRegistry();
  ~DriveRegistry();

  /// Included unless set.
  void setRealDrives(RealDrives realDrives);

  /// Adds an emulated drive, whose disc is the folder `path`, puts the disc in and returns the
  /// device. The first one is named kv0, the next kv1 and so on. Children learn of it through the
  /// environment variable KELVANEFS_EMULATED_DRIVES, which gets a line "kv0=/absolute/path". Null,
  /// with a sentence in `error`, where the folder is no disc, is of a format not known, or is in a
  /// drive already.
  DRDevice* addEmulatedDrive(const std::string& path, std::string* error);

  /// Adds one of the machine's own drives to those of the list, where not all of them are in it,
  /// and returns the device. `path` is its node, or a link to it. Null, with a sentence in `error`,
  /// where it is none.
  DRDevice* addRealDrive(const std::string& path, std::string* error);

  /// See DRDevice::devices. Looks for real drives anew at each call.
  std::vector<DRDevice*> devices();

  /// Forgets every drive and the setting; the devices are destroyed. For tests.
  void reset();

 private:
  void findRealDrives();
  DRDevice* realDrive(const std::string& name);
  bool isListed(const DRDevice& realDevice) const;
  void publishEmulatedDrives() const;

  RealDrives realDrives_ = RealDrives::Included;
  std::vector<std::unique_ptr<DRDevice>> emulated_;
  std::vector<std::unique_ptr<DRDevice>> real_;
  /// The names of the real drives that were added one by one.
  std::vector<std::string> added_;
};

}  // namespace kelvane

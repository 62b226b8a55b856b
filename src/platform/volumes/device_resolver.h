// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvane {

/// Carries the emulated drives of the application to every child: one line
/// "kv0=/absolute/NAME.kvdisc" a drive.
inline constexpr char kEmulatedDrivesVariable[] = "KELVANEFS_EMULATED_DRIVES";

/// An emulated drive and the folder of the disc in it.
struct EmulatedDrive {
  std::string bsdName;     ///< "kv0"
  std::string discFolder;  ///< Absolute path of NAME.kvdisc.

  friend bool operator==(const EmulatedDrive&, const EmulatedDrive&) = default;
};

/// What a name for a drive stands for on this machine.
struct ResolvedDevice {
  enum class Kind { LinuxDevice, EmulatedDrive };

  Kind kind = Kind::LinuxDevice;
  std::string path;        ///< What to open for reading: the device node, or the file of sectors.
  std::string discFolder;  ///< Of an emulated drive; otherwise empty.

  friend bool operator==(const ResolvedDevice&, const ResolvedDevice&) = default;
};

/// The drives in a text of the form of kEmulatedDrivesVariable; lines of another form are left out.
std::vector<EmulatedDrive> parseEmulatedDrives(std::string_view lines);

/// The emulated drives that the environment names.
std::vector<EmulatedDrive> emulatedDrivesOfEnvironment();

/// Turns a name of a drive or of the first slice of its disc into what can be opened. This is the
/// one place that does.
///
/// Understood are the BSD name ("kv0", "sr0"), its slice ("kv0s0"), either with "/dev/" (block
/// device) or "/dev/r" (raw device) before it, and the name that is given to the second and further
/// drives of one name ("kv0/2"): the count after the slash tells drives of equal names apart, which
/// drives here never have. Empty for a name of another form, and for an emulated drive that is not
/// in `drives`.
std::optional<ResolvedDevice> resolveDevice(std::string_view name,
                                            const std::vector<EmulatedDrive>& drives);

/// The same with the drives of the environment.
std::optional<ResolvedDevice> resolveDevice(std::string_view name);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "virtualdrive/command_result.h"
#include "virtualdrive/state/disc_state.h"

namespace kelvane::virtualdrive {

/// A blank disc to be made.
struct NewDisc {
  MediumKind medium = MediumKind::CdR;
  /// Sectors of 2048 bytes that one session can hold.
  Lba capacitySectors = kDefaultCdCapacity;
};

/// Whose hand opens the tray.
enum class EjectManner {
  /// The button of the drive: refused while a program has locked the tray (PREVENT ALLOW MEDIUM
  /// REMOVAL).
  Button,
  /// The needle in the hole: opens the tray whatever holds it, and takes the lock away. For a lock
  /// whose program died.
  Needle,
};

/// An optical burner in software with one disc, which lives in a folder NAME.kvdisc.
///
/// The folder holds `sectors` (2048 bytes a sector, by LBA, with holes where a disc has gaps or
/// audio), `audio` (2352 bytes a sector, by LBA; on discs with audio only), `disc.json` (the
/// medium, its sessions and tracks), `drive.json` (the tray and what programs have set) and `lock`.
/// The JSON files are replaced by rename, so a watcher of the folder sees each change as a move
/// onto the name. See state/disc_json.h and state/drive_json.h for the formats.
///
/// An object holds the folder's path and nothing else. Every call takes the lock, loads the state,
/// acts, stores the state and lets go, with signals blocked; so any number of processes and threads
/// can use one folder at the same time, and each may be killed at any moment: a write counts as far
/// as its sectors have reached the file.
class VirtualDrive {
 public:
  /// Makes a blank disc. `disc` must not exist; its parent must. On failure nothing is left behind.
  static bool create(const std::filesystem::path& disc, const NewDisc& what, std::string* error);

  /// Opens the disc in the folder `disc`. Empty, with a sentence in `error`, where there is no such
  /// folder, it holds no disc, the description is damaged or contradicts the sectors, or the format
  /// is that of a newer version.
  static std::optional<VirtualDrive> open(const std::filesystem::path& disc, std::string* error);

  /// Carries out a command block of MMC-5 (6 to 16 bytes). At most dataIn.size() bytes are
  /// answered; a command that sends data needs all of it in dataOut. A folder that has become
  /// unreadable answers 4/44/00. Where a file `faults` lies in the folder, goes wrong what it says
  /// (see faults/fault_script.h).
  CommandResult execute(std::span<const std::uint8_t> commandBlock, std::span<std::uint8_t> dataIn,
                        std::span<const std::uint8_t> dataOut) const;

  /// Closes the tray. The next command that needs the medium learns of the change (6/28/00). True
  /// also where the tray was closed already.
  bool insertDisc(std::string* error) const;
  /// Opens the tray. True also where it was open already.
  bool ejectDisc(EjectManner manner, std::string* error) const;
  /// Whether the tray is closed. False also where the state cannot be read.
  bool mediaLoaded() const;
  /// Takes the news that the medium may have changed (6/28/00), as a kernel does that opens the
  /// drive, so that no program hears it.
  void takeNewsOfMedium() const;

  /// Whether the folder holds a disc, however damaged. False once a fault has taken the drive away.
  bool isThere() const;
  /// Whether nobody gets the drive for himself, because of a fault.
  bool refusesExclusiveAccess() const;

  /// What is on the disc now. Works with the tray open too.
  std::optional<DiscState> inspect(std::string* error) const;

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path sectorsFile() const { return folder_ / "sectors"; }

 private:
  explicit VirtualDrive(std::filesystem::path folder) : folder_(std::move(folder)) {}
  /// `duration` is how long the data takes in real time, which is the caller's to wait for.
  CommandResult executeLocked(std::span<const std::uint8_t> block, std::span<std::uint8_t> dataIn,
                              std::span<const std::uint8_t> dataOut,
                              std::chrono::nanoseconds* duration) const;

  std::filesystem::path folder_;
};

}  // namespace kelvane::virtualdrive

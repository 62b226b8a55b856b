// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <signal.h>

#include <filesystem>
#include <optional>
#include <string>

#include "virtualdrive/file_descriptor.h"
#include "virtualdrive/state/disc_state.h"
#include "virtualdrive/state/drive_state.h"
#include "virtualdrive/state/sector_file.h"

namespace kelvane::virtualdrive {

/// Blocks every signal of the calling thread as long as it lives, so that no handler ends a command
/// halfway.
class SignalsBlocked {
 public:
  SignalsBlocked();
  ~SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

/// The folder NAME.kvdisc, locked, with what it says loaded. Nobody else acts on the folder while
/// this object lives.
///
/// What is changed in `disc` and `drive` counts when it is stored. Each of both files is replaced
/// by rename, so that a reader sees the old or the new one, whole.
class DiscFolder {
 public:
  /// Waits for the lock and loads. Ends what an interrupted process has left half done (see
  /// disc_json.h). Empty, with a sentence in `error`, where this is no disc or a damaged one.
  static std::optional<DiscFolder> lock(const std::filesystem::path& folder, std::string* error);

  /// Makes folder and files of a blank disc. The folder must not exist. On failure nothing is left
  /// behind.
  static bool create(const std::filesystem::path& folder, const DiscState& disc,
                     const DriveState& drive, std::string* error);

  bool storeDisc();
  bool storeDrive();

  /// Removes all sectors and leaves the disc as `blank` tells, which has no tracks and sessions, so
  /// that a kill in between is carried to the end by whoever comes next.
  bool removeEverything(const DiscState& blank);

  DiscState disc;
  DriveState drive;
  /// The data sectors.
  SectorFile& sectors() { return *sectors_; }
  /// The file of the sectors of that form. The one of audio is made where there is none; null where
  /// that cannot be done.
  SectorFile* fileOf(TrackForm form);
  /// As they are now; empty where that cannot be told.
  std::optional<FileLengths> fileLengths() const;
  const std::filesystem::path& path() const { return folder_; }

 private:
  DiscFolder(std::filesystem::path folder, FileDescriptor lock)
      : folder_(std::move(folder)), lock_(std::move(lock)) {}

  bool load(std::string* error);
  bool openFiles();
  /// Cuts the files of sectors to what `disc` says.
  bool cutFiles();
  bool loadDisc(std::string* error);

  std::filesystem::path folder_;
  FileDescriptor lock_;
  std::optional<SectorFile> sectors_;
  /// Empty where the disc has never had audio.
  std::optional<SectorFile> audio_;
};

}  // namespace kelvane::virtualdrive

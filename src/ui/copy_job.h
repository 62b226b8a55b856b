// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace kelvane {

/// What is to be copied, and to where.
struct CopyRequest {
  std::vector<std::string> sources;  ///< Absolute paths of files, folders and links.
  std::string folder;                ///< The folder that gets them; an absolute path.
  /// A further folder that needs as much room, since what is written to `folder` is kept there.
  std::string scratchFolder;
};

/// What is done where an item of that name is there already.
enum class ConflictAnswer { Replace, KeepBoth, Skip };

/// An item that is there already. Two folders are no conflict: what is in the new one is put into
/// the old one.
struct CopyConflict {
  std::string name;
  /// Whether the old one can be replaced: files and links by files and links only.
  bool canReplace = true;
};

struct CopyProgress {
  std::string name;  ///< Of the file that is copied now.
  uint64_t files = 0;
  uint64_t filesInAll = 0;
  uint64_t bytes = 0;
  uint64_t bytesInAll = 0;
};

enum class CopyProblem {
  NotReadable,
  NoRoom,
  TooLarge,        ///< 4 GiB or more, which no file on a disc can have (ECMA-119, 7.3.3).
  NotAFile,        ///< A device, a pipe, a socket.
  HoldsTheVolume,  ///< A folder into which it would be copied itself.
  AlreadyThere,    ///< An item that is in that folder, and would replace itself.
  NotAbsolute,     ///< No path of a file.
  Failed,          ///< For any other reason.
};

struct CopyFailure {
  std::string path;
  CopyProblem problem = CopyProblem::Failed;
  int errorNumber = 0;  ///< An errno value where one tells more.
};

struct CopyOutcome {
  uint64_t files = 0;  ///< That were copied.
  std::vector<CopyFailure> failures;
  bool cancelled = false;
  /// Where there was not room enough, so that nothing was copied: bytes needed, bytes free.
  struct Room {
    uint64_t needed = 0;
    uint64_t free = 0;
  };
  std::optional<Room> missingRoom;
};

/// Who watches a copy. Called on the copy's thread.
class CopyObserver {
 public:
  virtual ~CopyObserver() = default;
  virtual void progressed(const CopyProgress& progress) = 0;
  /// Empty where the copy is to be cancelled.
  virtual std::optional<ConflictAnswer> ask(const CopyConflict& conflict) = 0;
};

/// Copies files and folders into a folder, as a file manager does: with modes and times, links as
/// links, folders into folders of the same name. Errors are collected, and the copy goes on behind
/// them.
///
/// A file appears under its name when it is complete; one that is replaced stays until then. Where
/// `stop` is requested, what was made so far of the item of `sources` that was being copied is
/// taken away again: items before it stay, and so do replaced files. Blocks; for a thread of its
/// own.
CopyOutcome copyInto(const CopyRequest& request, CopyObserver& observer,
                     const std::stop_token& stop);

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kelvane::model {

/// What a program can do on the volume in one step. Final links are never followed.
enum class StepKind {
  Create,    ///< open(O_CREAT | O_EXCL) and write
  Replace,   ///< open(O_CREAT | O_TRUNC) and write
  WriteAt,   ///< open(O_WRONLY) and pwrite
  Append,    ///< open(O_APPEND | O_CREAT) and write
  Truncate,  ///< truncate(2)
  Read,      ///< the whole file
  Stat,
  ReadLink,
  List,
  StatFs,
  MakeDirectory,
  RemoveDirectory,
  Unlink,
  Rename,
  RenameNoReplace,
  SymLink,
  ChangeMode,
  SetTime,
  HandleOpen,  ///< opens a file and keeps it open
  HandleWrite,
  HandleRead,
  HandleClose,
  Reopen,  ///< closes the volume, builds the session, opens the disc with it
};

constexpr size_t kHandleCount = 3;

struct Step {
  StepKind kind = StepKind::Stat;
  std::string path = "/";
  std::string other;  ///< the destination of a rename, the text of a link
  off_t offset = 0;   ///< of a write; the new length of a truncation
  size_t size = 0;    ///< bytes to write
  mode_t mode = 0;
  unsigned seed = 0;  ///< of the bytes to write; of a time, the seconds
  size_t handle = 0;
  bool isForWriting = false;  ///< HandleOpen
  bool comparesTree = false;  ///< The whole tree is compared after it.
};

/// The bytes that a step writes.
std::string bytesOf(const Step& step);

/// A step as one line, to be read by people.
std::ostream& operator<<(std::ostream& stream, const Step& step);

/// A path or text as people can read it, with its unusual bytes escaped.
std::string readable(const std::string& text);
/// A file's content in short: its length, its beginning and a hash.
std::string summaryOf(const std::string& content);

/// How a step ended.
struct Outcome {
  int code = 0;        ///< errno's number, or 0
  std::string detail;  ///< what the program learned: a content, a text, a list of names, attributes
  std::optional<int64_t> modified;  ///< Seconds; in the model only where the rules define it.
  bool isDefined = true;            ///< False: the rules say nothing, the step is left out.

  static Outcome failure(int code) { return {code, {}, {}, true}; }
  static Outcome undefined() { return {0, {}, {}, false}; }
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);
bool agree(const Outcome& expected, const Outcome& actual);

}  // namespace kelvane::model

// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/step.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <functional>

namespace kelvane::model {
namespace {

constexpr std::array<const char*, 23> kNames = {"create",
                                                "replace",
                                                "write at",
                                                "append",
                                                "truncate",
                                                "read",
                                                "stat",
                                                "readlink",
                                                "list",
                                                "statfs",
                                                "mkdir",
                                                "rmdir",
                                                "unlink",
                                                "rename",
                                                "rename without replacement",
                                                "symlink",
                                                "chmod",
                                                "set time",
                                                "open",
                                                "write to open file",
                                                "read open file",
                                                "close",
                                                "close volume, burn, open again"};

bool usesHandle(StepKind kind) {
  return kind >= StepKind::HandleOpen && kind <= StepKind::HandleClose;
}

bool writes(StepKind kind) {
  return kind <= StepKind::Append || kind == StepKind::HandleWrite;
}

}  // namespace

std::string bytesOf(const Step& step) {
  std::string bytes(step.size, '\0');
  for (size_t index = 0; index < bytes.size(); ++index) {
    bytes[index] = static_cast<char>('a' + (step.seed + index + index / 26) % 26);
  }
  return bytes;
}

std::string readable(const std::string& text) {
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte < 0x7f) {
      result += character;
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof(escaped), "\\x%02x", byte);
      result += escaped;
    }
  }
  return result;
}

std::string summaryOf(const std::string& content) {
  constexpr size_t kShown = 24;
  return std::to_string(content.size()) + " bytes \"" + readable(content.substr(0, kShown)) +
         "\" hash " + std::to_string(std::hash<std::string>()(content) % 1000000);
}

std::ostream& operator<<(std::ostream& stream, const Step& step) {
  if (step.comparesTree) stream << "(and then the whole tree) ";
  stream << kNames[static_cast<size_t>(step.kind)];
  if (usesHandle(step.kind)) stream << " #" << step.handle;
  if (step.kind == StepKind::Reopen || step.kind == StepKind::StatFs) return stream;
  if (!usesHandle(step.kind) || step.kind == StepKind::HandleOpen) {
    stream << " \"" << readable(step.path) << '"';
  }
  if (!step.other.empty()) stream << " -> \"" << readable(step.other) << '"';
  if (step.kind == StepKind::HandleOpen) stream << (step.isForWriting ? " read-write" : " read");
  if (writes(step.kind)) stream << " " << step.size << " bytes (seed " << step.seed << ")";
  if (step.offset != 0) stream << " at " << step.offset;
  if (step.mode != 0) stream << " mode " << std::oct << step.mode << std::dec;
  if (step.kind == StepKind::SetTime) stream << " to " << step.seed;
  return stream;
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  if (outcome.code != 0) return stream << strerrorname_np(outcome.code);
  stream << "success";
  if (!outcome.detail.empty()) stream << ", " << outcome.detail;
  if (outcome.modified) stream << ", modified " << *outcome.modified;
  return stream;
}

bool agree(const Outcome& expected, const Outcome& actual) {
  if (expected.code != actual.code || expected.detail != actual.detail) return false;
  return !expected.modified || !actual.modified || *expected.modified == *actual.modified;
}

}  // namespace kelvane::model

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/mount_table.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>

namespace kelvane {
namespace {

constexpr std::string_view kEndOfOptionalFields = "-";

bool isOctalDigit(char c) {
  return c >= '0' && c <= '7';
}

// The kernel writes blank, tab, line feed, backslash and '#' as a backslash and three octal digits.
std::string withoutEscapes(std::string_view field) {
  std::string text;
  for (size_t i = 0; i < field.size(); ++i) {
    const std::string_view rest = field.substr(i);
    if (rest.size() >= 4 && rest[0] == '\\' && rest[1] <= '3' &&
        std::all_of(rest.begin() + 1, rest.begin() + 4, isOctalDigit)) {
      const int value = (rest[1] - '0') * 64 + (rest[2] - '0') * 8 + (rest[3] - '0');
      text += static_cast<char>(value);
      i += 3;
    } else {
      text += field[i];
    }
  }
  return text;
}

std::vector<std::string_view> fieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  while (!line.empty()) {
    const size_t blank = line.find(' ');
    if (blank != 0) fields.push_back(line.substr(0, blank));
    line.remove_prefix(blank == std::string_view::npos ? line.size() : blank + 1);
  }
  return fields;
}

std::optional<int64_t> number(std::string_view field) {
  int64_t value = 0;
  const auto [end, failure] = std::from_chars(field.data(), field.data() + field.size(), value);
  if (failure != std::errc() || end != field.data() + field.size()) return std::nullopt;
  return value;
}

// "36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue": id, parent,
// device, root, mount point, options, any number of optional fields, "-", type, source, options of
// the file system.
std::optional<MountTableLine> parseLine(std::string_view line) {
  constexpr size_t kMountPoint = 4;
  constexpr size_t kFirstOptionalField = 6;
  const std::vector<std::string_view> fields = fieldsOf(line);
  if (fields.size() <= kFirstOptionalField) return std::nullopt;
  const auto dash =
      std::find(fields.begin() + kFirstOptionalField, fields.end(), kEndOfOptionalFields);
  if (fields.end() - dash < 3) return std::nullopt;
  const std::optional<int64_t> id = number(fields[0]);
  const std::optional<int64_t> parentId = number(fields[1]);
  if (!id || !parentId) return std::nullopt;
  return MountTableLine{*id, *parentId, withoutEscapes(fields[kMountPoint]),
                        withoutEscapes(dash[1]), withoutEscapes(dash[2])};
}

bool liesAtOrBelow(std::string_view path, std::string_view folder) {
  if (folder == "/") return path.starts_with('/');
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool hasParent(const std::vector<MountTableLine>& table, const MountTableLine& line) {
  return line.parentId != line.id &&
         std::any_of(table.begin(), table.end(),
                     [&](const MountTableLine& other) { return other.id == line.parentId; });
}

// The mount that the way from `from` to `path` enters first; from outside the table where `from` is
// null. Of two at one place the later one covers the earlier.
const MountTableLine* nextMount(const std::vector<MountTableLine>& table,
                                const MountTableLine* from, std::string_view path) {
  const MountTableLine* next = nullptr;
  for (const MountTableLine& line : table) {
    if (&line == from || !liesAtOrBelow(path, line.mountedOn)) continue;
    const bool isChild = from != nullptr ? line.parentId == from->id && line.id != from->id
                                         : !hasParent(table, line);
    if (!isChild) continue;
    if (next == nullptr || line.mountedOn.size() <= next->mountedOn.size()) next = &line;
  }
  return next;
}

}  // namespace

std::vector<MountTableLine> parseMountTable(std::string_view mountinfo) {
  std::vector<MountTableLine> table;
  while (!mountinfo.empty()) {
    const size_t lineFeed = mountinfo.find('\n');
    if (std::optional<MountTableLine> line = parseLine(mountinfo.substr(0, lineFeed))) {
      table.push_back(std::move(*line));
    }
    mountinfo.remove_prefix(lineFeed == std::string_view::npos ? mountinfo.size() : lineFeed + 1);
  }
  return table;
}

const MountTableLine* mountOfPath(const std::vector<MountTableLine>& table, std::string_view path) {
  const MountTableLine* mount = nullptr;
  // No mount is entered twice, so the number of lines bounds the walk whatever ids a text claims.
  for (size_t steps = 0; steps <= table.size(); ++steps) {
    const MountTableLine* next = nextMount(table, mount, path);
    if (next == nullptr) break;
    mount = next;
  }
  return mount;
}

std::string fileSystemType(std::string_view kernelType) {
  if (kernelType == "iso9660" || kernelType == "fuse.cd9660") return "cd9660";
  return std::string(kernelType);
}

std::vector<MountTableLine> readMountTable() {
  std::ifstream file("/proc/self/mountinfo", std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return parseMountTable(text);
}

std::optional<MountTableEntry> mountTableEntry(const std::string& path) {
  struct statvfs sizes = {};
  if (statvfs(path.c_str(), &sizes) != 0) return std::nullopt;
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             &std::free);
  if (resolved == nullptr) return std::nullopt;
  const std::vector<MountTableLine> table = readMountTable();
  const MountTableLine* mount = mountOfPath(table, resolved.get());
  if (mount == nullptr) return std::nullopt;
  return MountTableEntry{.type = fileSystemType(mount->kernelType),
                         .mountedOn = mount->mountedOn,
                         .mountedFrom = mount->mountedFrom,
                         .totalBlocks = static_cast<int64_t>(sizes.f_blocks),
                         .freeBlocks = static_cast<int64_t>(sizes.f_bfree),
                         .blockSize = static_cast<int64_t>(sizes.f_frsize)};
}

std::string resolvedMountPoint(const std::string& mountPoint) {
  const std::filesystem::path path(mountPoint);
  std::error_code failure;
  const std::filesystem::path folder = std::filesystem::canonical(path.parent_path(), failure);
  return failure ? mountPoint : (folder / path.filename()).string();
}

bool isMountPoint(const std::string& path) {
  const std::string resolved = resolvedMountPoint(path);
  const std::vector<MountTableLine> table = readMountTable();
  return std::any_of(table.begin(), table.end(),
                     [&](const MountTableLine& line) { return line.mountedOn == resolved; });
}

}  // namespace kelvane

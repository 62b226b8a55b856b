// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/file_tree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <utility>
#include <vector>

#include "helpers/workshop.h"

namespace kelvane::test {

namespace fs = std::filesystem;
using isovolume::DirectoryEntry;
using isovolume::IsoVolume;
using isovolume::NodeId;
using isovolume::Status;

namespace {

char kindOf(mode_t mode) {
  if (S_ISREG(mode)) return 'f';
  if (S_ISDIR(mode)) return 'd';
  if (S_ISLNK(mode)) return 'l';
  return 'o';
}

FileTreeEntry entryOf(const fs::path& path) {
  struct stat status = {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  FileTreeEntry entry;
  entry.kind = kindOf(status.st_mode);
  entry.permissions = entry.kind == 'l' ? 0 : status.st_mode & 07777;
  entry.user = status.st_uid;
  entry.group = status.st_gid;
  entry.modified = status.st_mtime;
  if (entry.kind == 'l') entry.target = fs::read_symlink(path).string();
  if (entry.kind == 'f') {
    entry.size = static_cast<std::uint64_t>(status.st_size);
    const std::string content = readFile(path);
    EXPECT_EQ(content.size(), entry.size) << path;
    entry.content = std::hash<std::string>()(content);
  }
  return entry;
}

std::string contentOf(IsoVolume& volume, NodeId file, std::uint64_t size) {
  std::string content(size, '\0');
  std::size_t length = 0;
  // Odd steps, so that reads begin and end anywhere in a block.
  constexpr std::size_t kStep = 30011;
  for (std::uint64_t offset = 0; offset < size; offset += kStep) {
    const std::size_t wanted = std::min<std::uint64_t>(kStep, size - offset);
    std::span out(reinterpret_cast<std::uint8_t*>(content.data()) + offset, wanted);
    EXPECT_EQ(volume.readFile(file, offset, out, &length), Status::ok) << volume.name(file);
    EXPECT_EQ(length, wanted);
  }
  return content;
}

FileTreeEntry entryOf(IsoVolume& volume, const DirectoryEntry& directoryEntry) {
  const isovolume::Attributes attributes = volume.attributes(directoryEntry.node);
  FileTreeEntry entry;
  entry.kind = kindOf(attributes.mode);
  EXPECT_EQ(directoryEntry.type, attributes.mode & S_IFMT);
  entry.permissions = entry.kind == 'l' ? 0 : attributes.mode & 07777;
  entry.user = attributes.user;
  entry.group = attributes.group;
  entry.modified = attributes.modified;
  if (entry.kind == 'l') {
    EXPECT_EQ(volume.readLink(directoryEntry.node, &entry.target), Status::ok);
    EXPECT_EQ(attributes.size, entry.target.size());
  }
  if (entry.kind == 'f') {
    entry.size = attributes.size;
    entry.content = std::hash<std::string>()(contentOf(volume, directoryEntry.node, entry.size));
  }
  return entry;
}

void collect(IsoVolume& volume, NodeId directory, const std::string& prefix, FileTree* tree) {
  const auto visit = [&](const DirectoryEntry& entry, std::uint64_t) {
    const std::string path = prefix + std::string(entry.name);
    NodeId found = 0;
    EXPECT_EQ(volume.lookup(directory, entry.name, &found), Status::ok) << path;
    EXPECT_EQ(found, entry.node) << path;
    EXPECT_EQ(volume.parent(entry.node), directory) << path;
    EXPECT_TRUE(tree->emplace(path, entryOf(volume, entry)).second) << path << " appears twice";
    if (S_ISDIR(entry.type)) collect(volume, entry.node, path + "/", tree);
    return true;
  };
  EXPECT_EQ(volume.readDirectory(directory, 0, visit), Status::ok) << prefix;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const FileTreeEntry& entry) {
  return stream << entry.kind << ' ' << std::oct << entry.permissions << std::dec << ' '
                << entry.user << ':' << entry.group << ' ' << entry.size << " bytes, time "
                << entry.modified << (entry.kind == 'l' ? " -> " + entry.target : "")
                << ", content " << entry.content;
}

FileTree treeOfDirectory(const fs::path& root) {
  FileTree tree;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    tree.emplace(entry.path().lexically_relative(root).string(), entryOf(entry.path()));
  }
  return tree;
}

FileTree treeOfVolume(IsoVolume& volume) {
  FileTree tree;
  collect(volume, isovolume::kRootNode, "", &tree);
  return tree;
}

std::string differences(const FileTree& shown, const FileTree& expected) {
  std::ostringstream lines;
  for (const auto& [path, entry] : shown) {
    const auto other = expected.find(path);
    if (other == expected.end()) {
      lines << path << ": not expected: " << entry << '\n';
    } else if (!(entry == other->second)) {
      lines << path << ": " << entry << ", expected: " << other->second << '\n';
    }
  }
  for (const auto& [path, entry] : expected) {
    if (!shown.contains(path)) lines << path << ": missing: " << entry << '\n';
  }
  return std::move(lines).str();
}

FileTree asExtracted(FileTree tree) {
  for (auto& [path, entry] : tree) {
    entry.user = entry.group = 0;
    if (entry.kind == 'l') entry.modified = 0;
  }
  return tree;
}

FileTree withoutAttributes(FileTree tree) {
  for (auto& [path, entry] : tree) {
    entry.user = entry.group = entry.permissions = 0;
    entry.modified = 0;
  }
  return tree;
}

}  // namespace kelvane::test

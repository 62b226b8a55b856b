// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/iso_volume.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "helpers/isovolume/directory_tree.h"
#include "helpers/isovolume/volume_descriptors.h"

namespace kelvane::isovolume {
namespace {

std::unique_ptr<DirectoryTree> readableTree(BlockSource& source, Naming naming, std::uint8_t skip,
                                            const VolumeDescriptor& volume) {
  auto tree =
      std::make_unique<DirectoryTree>(source, naming, skip, volume.rootExtent, volume.rootLength);
  const DirectoryTree::Directory* root = nullptr;
  if (tree->directory(kRootNode, &root) != Status::ok) return nullptr;
  return tree;
}

struct ChosenTree {
  std::unique_ptr<DirectoryTree> tree;
  Naming naming = Naming::plain;
};

/// Rock Ridge before Joliet before plain names, as far as they can be read.
ChosenTree chooseTree(BlockSource& source, const VolumeDescriptors& descriptors) {
  if (descriptors.primary) {
    NodeTable unused;
    const auto skip =
        DirectoryLoader(source, unused).detectRockRidge(descriptors.primary->rootExtent);
    if (skip) {
      auto tree = readableTree(source, Naming::rockRidge, *skip, *descriptors.primary);
      if (tree) return {std::move(tree), Naming::rockRidge};
    }
  }
  if (descriptors.joliet) {
    auto tree = readableTree(source, Naming::joliet, 0, *descriptors.joliet);
    if (tree) return {std::move(tree), Naming::joliet};
  }
  if (descriptors.primary) {
    return {readableTree(source, Naming::plain, 0, *descriptors.primary), Naming::plain};
  }
  return {};
}

char lowerCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

/// Joliet has room for 16 characters, ISO-9660 for 32 but not for every character.
std::string volumeName(const VolumeDescriptors& descriptors) {
  const std::string plain = descriptors.primary ? descriptors.primary->volumeId : "";
  const std::string joliet = descriptors.joliet ? descriptors.joliet->volumeId : "";
  const bool plainGoesOn = plain.size() > joliet.size() &&
                           std::ranges::equal(std::string_view(plain).substr(0, joliet.size()),
                                              joliet, {}, lowerCase, lowerCase);
  std::string name = joliet.empty() || plainGoesOn ? plain : joliet;
  for (char& character : name) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x20 || code == 0x7F || code == '/') character = '_';
  }
  if (name == "." || name == "..") name = "_";
  return name;
}

}  // namespace

IsoVolume::IsoVolume(BlockSource& source, Naming naming, std::unique_ptr<DirectoryTree> tree)
    : source_(source), naming_(naming), tree_(std::move(tree)) {}

IsoVolume::~IsoVolume() = default;

std::unique_ptr<IsoVolume> IsoVolume::open(BlockSource& source, SessionStart start,
                                           std::string* error) {
  const auto descriptors = readVolumeDescriptors(source, start.lba, error);
  if (!descriptors) return nullptr;
  ChosenTree chosen = chooseTree(source, *descriptors);
  if (!chosen.tree) {
    *error = "the root directory of the volume at block " + std::to_string(start.lba) +
             " cannot be read";
    return nullptr;
  }
  std::unique_ptr<IsoVolume> volume(new IsoVolume(source, chosen.naming, std::move(chosen.tree)));
  const auto& leading = descriptors->primary ? descriptors->primary : descriptors->joliet;
  volume->hasPrimaryDescriptor_ = descriptors->primary.has_value();
  volume->volumeSpaceSize_ = leading->volumeSpaceSize;
  volume->volumeId_ = volumeName(*descriptors);
  return volume;
}

Status IsoVolume::lookup(NodeId directory, std::string_view name, NodeId* child) {
  return tree_->lookup(directory, name, child);
}

Status IsoVolume::lookupPath(std::string_view path, NodeId* node) {
  NodeId current = kRootNode;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string_view component = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    if (component.empty()) continue;
    const Status status = tree_->lookup(current, component, &current);
    if (status != Status::ok) return status;
  }
  *node = current;
  return Status::ok;
}

Status IsoVolume::readDirectory(NodeId directory, std::uint64_t position, const Visitor& visit) {
  const DirectoryTree::Directory* found = nullptr;
  const Status status = tree_->directory(directory, &found);
  if (status != Status::ok) return status;
  const NodeTable& nodes = tree_->nodes();
  // The visitor may read further directories, which moves `*found`.
  const NodeId first = found->first;
  const NodeId count = found->count;
  for (std::uint64_t index = position; index < count; ++index) {
    const NodeId id = first + static_cast<NodeId>(index);
    if (nodes[id].hidden) continue;
    const DirectoryEntry entry{
        .node = id, .name = nodes.name(id), .type = nodes[id].mode & mode_t{S_IFMT}};
    if (!visit(entry, index + 1)) break;
  }
  return Status::ok;
}

bool IsoVolume::contains(NodeId node) const {
  return tree_->contains(node);
}

Attributes IsoVolume::attributes(NodeId id) const {
  const Node& node = tree_->nodes()[id];
  return {.mode = node.mode,
          .size = node.size,
          .links = node.links,
          .user = node.user,
          .group = node.group,
          .device = node.device,
          .modified = node.modified,
          .accessed = node.accessed,
          .changed = node.changed};
}

NodeId IsoVolume::parent(NodeId node) const {
  return tree_->nodes()[node].parent;
}

std::string_view IsoVolume::name(NodeId node) const {
  return tree_->nodes().name(node);
}

std::uint64_t IsoVolume::rootExtent() const {
  return tree_->nodes()[kRootNode].firstBlock;
}

Status IsoVolume::locate(NodeId file, std::uint64_t offset, std::uint64_t length,
                         std::vector<ByteRange>* ranges) {
  ranges->clear();
  const Node& node = tree_->nodes()[file];
  if (!S_ISREG(node.mode)) return Status::notAFile;
  if (node.unreadable) return Status::damaged;
  const Section whole{.firstBlock = node.firstBlock, .length = node.size};
  const std::span<const Section> sections =
      node.severalSections ? std::span(tree_->nodes().sectionsOf(node)) : std::span(&whole, 1);
  const std::uint64_t sourceBytes = source_.sizeInBlocks() * kBlockSize;
  for (const Section& section : sections) {
    if (length == 0) break;
    if (offset >= section.length) {
      offset -= section.length;
      continue;
    }
    const std::uint64_t part = std::min(length, section.length - offset);
    const std::uint64_t position = section.firstBlock * kBlockSize + offset;
    if (position > sourceBytes || part > sourceBytes - position) return Status::damaged;
    ranges->push_back({.position = position, .length = part});
    length -= part;
    offset = 0;
  }
  return Status::ok;
}

namespace {

/// Reads bytes that need not begin or end with a block. The whole blocks among them go straight to
/// their place.
bool readBytes(BlockSource& source, std::uint64_t position, std::span<std::uint8_t> out) {
  std::array<std::uint8_t, kBlockSize> block = {};
  while (!out.empty()) {
    const std::uint64_t number = position / kBlockSize;
    const std::size_t skip = position % kBlockSize;
    std::size_t part = out.size() - out.size() % kBlockSize;
    if (skip == 0 && part > 0) {
      if (!source.readBlocks(number, out.first(part))) return false;
    } else {
      if (!source.readBlocks(number, block)) return false;
      part = std::min(out.size(), kBlockSize - skip);
      std::copy_n(block.begin() + static_cast<std::ptrdiff_t>(skip), part, out.begin());
    }
    out = out.subspan(part);
    position += part;
  }
  return true;
}

}  // namespace

Status IsoVolume::readFile(NodeId file, std::uint64_t offset, std::span<std::uint8_t> out,
                           std::size_t* length) {
  *length = 0;
  std::vector<ByteRange> ranges;
  const Status status = locate(file, offset, out.size(), &ranges);
  if (status != Status::ok) return status;
  for (const ByteRange& range : ranges) {
    const auto part = static_cast<std::size_t>(range.length);
    if (!readBytes(source_, range.position, out.subspan(*length, part))) return Status::damaged;
    *length += part;
  }
  return Status::ok;
}

Status IsoVolume::readLink(NodeId link, std::string* target) {
  const Node& node = tree_->nodes()[link];
  if (!S_ISLNK(node.mode)) return Status::notALink;
  if (node.unreadable) return Status::damaged;
  target->assign(node.target, node.size);
  return Status::ok;
}

}  // namespace kelvane::isovolume

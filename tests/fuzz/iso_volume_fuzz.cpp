// SPDX-License-Identifier: GPL-2.0-or-later
// Feeds disc images to the ISO volume reader and walks what it makes of them. The image is a
// SparseImage. What must hold whatever the disc says:
//  - no crash, no endless loop, no read outside the image (SparseImageSource sees to that);
//  - no more entries than directory records fit into the image, and no more reading than a fixed
//    multiple of its size;
//  - every name is one that a path can hold, is found, and is found once;
//  - what is read from a file is what stands at the places that the reader names, inside the image.
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "fuzz/sparse_image.h"
#include "helpers/isovolume/iso_volume.h"

namespace kelvane::fuzz {
namespace {

using isovolume::Attributes;
using isovolume::ByteRange;
using isovolume::DirectoryEntry;
using isovolume::IsoVolume;
using isovolume::kBlockSize;
using isovolume::kRootNode;
using isovolume::NodeId;
using isovolume::Status;

constexpr std::size_t kSmallestRecord = 34;
constexpr std::size_t kLongestName = 255;
constexpr std::size_t kLongestTarget = 4095;
/// A record may make the reader look at one more block (a relocated directory's) and go on in areas
/// elsewhere, of which there can be no more than 28 bytes each fit into the image.
constexpr std::uint64_t kMostReadsPerBlock =
    3 * (2 * kBlockSize / kSmallestRecord + 2 * kBlockSize / 28);

/// Walks a volume from its root.
class Walk {
 public:
  Walk(IsoVolume& volume, SparseImageSource& source) : volume_(volume), source_(source) {}

  void directory(NodeId id) {
    std::uint64_t behindFirst = 0;
    std::vector<NodeId> seen;
    const Status status = volume_.readDirectory(id, 0, [&](const DirectoryEntry& entry, auto next) {
      if (seen.empty()) behindFirst = next;
      seen.push_back(entry.node);
      visit(id, entry);
      return true;
    });
    FUZZ_CHECK(status == Status::ok || seen.empty());
    if (!seen.empty()) resume(id, behindFirst, seen);
    NodeId none = 0;
    FUZZ_CHECK(volume_.lookup(id, "..", &none) != Status::ok);
    FUZZ_CHECK(volume_.lookup(id, "", &none) != Status::ok);
  }

  [[nodiscard]] std::uint64_t entries() const { return entries_; }

 private:
  /// A listing that goes on behind its first entry gives the others.
  void resume(NodeId id, std::uint64_t position, const std::vector<NodeId>& seen) {
    std::size_t index = 1;
    const auto compare = [&](const DirectoryEntry& entry, std::uint64_t) {
      FUZZ_CHECK(index < seen.size() && seen[index] == entry.node);
      ++index;
      return true;
    };
    FUZZ_CHECK(volume_.readDirectory(id, position, compare) == Status::ok);
    FUZZ_CHECK(index == seen.size());
  }

  void visit(NodeId parent, const DirectoryEntry& entry) {
    ++entries_;
    const std::string name(entry.name);
    FUZZ_CHECK(!name.empty() && name.size() <= kLongestName && name != "." && name != "..");
    FUZZ_CHECK(name.find('/') == std::string::npos && name.find('\0') == std::string::npos);
    NodeId found = 0;
    FUZZ_CHECK(volume_.lookup(parent, name, &found) == Status::ok && found == entry.node);
    FUZZ_CHECK(volume_.contains(entry.node) && volume_.parent(entry.node) == parent);
    FUZZ_CHECK(volume_.name(entry.node) == name);
    const Attributes attributes = volume_.attributes(entry.node);
    FUZZ_CHECK((attributes.mode & S_IFMT) == entry.type);
    if (S_ISREG(entry.type)) {
      file(entry.node, attributes.size);
    } else if (S_ISLNK(entry.type)) {
      link(entry.node, attributes.size);
    } else if (S_ISDIR(entry.type)) {
      directory(entry.node);
    }
  }

  void file(NodeId id, std::uint64_t size) {
    std::vector<ByteRange> ranges;
    if (volume_.locate(id, 0, size, &ranges) == Status::ok) {
      std::uint64_t sum = 0;
      for (const ByteRange& range : ranges) sum += inside(range).length;
      FUZZ_CHECK(sum == size);
    }
    for (const std::uint64_t offset :
         {std::uint64_t{0}, size / 2, size - std::min<std::uint64_t>(size, 10), size + 1}) {
      read(id, size, offset);
    }
  }

  void read(NodeId id, std::uint64_t size, std::uint64_t offset) {
    std::array<std::uint8_t, 3000> bytes;
    std::size_t length = 0;
    const Status status = volume_.readFile(id, offset, bytes, &length);
    FUZZ_CHECK(length <= bytes.size());
    if (status != Status::ok) return;
    FUZZ_CHECK(length == std::min<std::uint64_t>(bytes.size(), size - std::min(size, offset)));
    std::vector<ByteRange> ranges;
    FUZZ_CHECK(volume_.locate(id, offset, bytes.size(), &ranges) == Status::ok);
    std::size_t compared = 0;
    std::array<std::uint8_t, kBlockSize> block;
    for (const ByteRange& range : ranges) {
      inside(range);
      for (std::uint64_t done = 0; done < range.length; ++done, ++compared) {
        const std::uint64_t position = range.position + done;
        if (done == 0 || position % kBlockSize == 0) {
          FUZZ_CHECK(source_.readBlocks(position / kBlockSize, block));
        }
        FUZZ_CHECK(bytes[compared] == block[position % kBlockSize]);
      }
    }
    FUZZ_CHECK(compared == length);
  }

  const ByteRange& inside(const ByteRange& range) {
    const std::uint64_t end = source_.sizeInBlocks() * kBlockSize;
    FUZZ_CHECK(range.position <= end && range.length <= end - range.position);
    return range;
  }

  void link(NodeId id, std::uint64_t size) {
    std::string target;
    if (volume_.readLink(id, &target) != Status::ok) return;
    FUZZ_CHECK(!target.empty() && target.size() == size && size <= kLongestTarget);
    FUZZ_CHECK(target.find('\0') == std::string::npos);
  }

  IsoVolume& volume_;
  SparseImageSource& source_;
  std::uint64_t entries_ = 0;
};

/// Reads all directories and nothing else: what it costs.
std::uint64_t listBelow(IsoVolume& volume, NodeId directory) {
  std::uint64_t entries = 0;
  (void)volume.readDirectory(directory, 0, [&](const DirectoryEntry& entry, std::uint64_t) {
    ++entries;
    if (S_ISDIR(entry.type)) entries += listBelow(volume, entry.node);
    return true;
  });
  return entries;
}

void readVolume(const SparseImage& image, std::uint32_t sessionStart) {
  SparseImageSource source(image);
  std::string error;
  const auto volume = IsoVolume::open(source, {sessionStart}, &error);
  FUZZ_CHECK(volume != nullptr || !error.empty());
  if (volume == nullptr) return;
  FUZZ_CHECK(volume->volumeId().find('/') == std::string::npos);
  FUZZ_CHECK(volume->volumeId().find('\0') == std::string::npos);
  const std::uint64_t listed = listBelow(*volume, kRootNode);
  FUZZ_CHECK(listed <= image.sizeInBlocks * (kBlockSize / kSmallestRecord));
  FUZZ_CHECK(source.blocksRead() <= 100 + kMostReadsPerBlock * image.sizeInBlocks);
  Walk walk(*volume, source);
  walk.directory(kRootNode);
  // A directory that could not be read is asked again, and its room may then be used up.
  FUZZ_CHECK(walk.entries() <= image.sizeInBlocks * (kBlockSize / kSmallestRecord));
}

}  // namespace
}  // namespace kelvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto image = kelvane::fuzz::SparseImage::decode({data, size});
  kelvane::fuzz::readVolume(image, 0);
  if (image.sessionStart != 0) kelvane::fuzz::readVolume(image, image.sessionStart);
  return 0;
}

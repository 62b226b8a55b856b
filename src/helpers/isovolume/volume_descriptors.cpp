// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/volume_descriptors.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "helpers/isovolume/directory_record.h"
#include "helpers/isovolume/iso_fields.h"
#include "helpers/isovolume/iso_names.h"

namespace kelvane::isovolume {
namespace {

constexpr std::uint64_t kFirstDescriptor = 16;
constexpr std::uint64_t kMostDescriptors = 64;

constexpr std::uint8_t kPrimary = 1;
constexpr std::uint8_t kSupplementary = 2;
constexpr std::uint8_t kTerminator = 255;

std::string_view text(Bytes block, std::size_t offset, std::size_t length) {
  return {reinterpret_cast<const char*>(block.data()) + offset, length};
}

std::string withoutFilling(std::string id) {
  const std::size_t nul = id.find('\0');
  if (nul != std::string::npos) id.resize(nul);
  while (id.ends_with(' ')) id.pop_back();
  return id;
}

/// The three levels of UCS-2 that Joliet registers as escape sequences, at byte 88 of the
/// descriptor.
bool isJoliet(Bytes block) {
  const std::string_view escape = text(block, 88, 3);
  return escape == "%/@" || escape == "%/C" || escape == "%/E";
}

/// Nothing when the descriptor is damaged or its blocks are not of 2048 bytes.
std::optional<VolumeDescriptor> decode(Bytes block, bool joliet) {
  VolumeDescriptor descriptor;
  if (bothEndian16(block, 128) != kBlockSize) return std::nullopt;
  DirectoryRecord root;
  std::size_t length = 0;
  if (decodeDirectoryRecord(block.subspan(156, kRootRecordLength), &root, &length) !=
      Decoding::record) {
    return std::nullopt;
  }
  const Bytes id = block.subspan(40, 32);
  descriptor.volumeId =
      withoutFilling(joliet ? utf8OfUtf16(id) : std::string(id.begin(), id.end()));
  descriptor.volumeSpaceSize = bothEndian32(block, 80);
  descriptor.rootExtent = root.extent;
  descriptor.rootLength = root.dataLength;
  return descriptor;
}

void take(Bytes block, VolumeDescriptors* found) {
  const std::uint8_t type = block[0];
  if (type == kPrimary && !found->primary) {
    found->primary = decode(block, false);
  } else if (type == kSupplementary && isJoliet(block) && !found->joliet) {
    found->joliet = decode(block, true);
  }
}

}  // namespace

std::optional<VolumeDescriptors> readVolumeDescriptors(BlockSource& source, Lba sessionStart,
                                                       std::string* error) {
  VolumeDescriptors found;
  std::array<std::uint8_t, kBlockSize> block = {};
  const std::uint64_t first = std::uint64_t{sessionStart} + kFirstDescriptor;
  bool anyDescriptor = false;
  bool anyRead = false;
  const std::uint64_t end = std::min(first + kMostDescriptors, source.sizeInBlocks());
  for (std::uint64_t lba = first; lba < end; ++lba) {
    if (!source.readBlocks(lba, block)) {
      // The next one may be readable, but only just behind the start is a search worth a drive's
      // retries.
      if (lba < first + 2) continue;
      break;
    }
    anyRead = true;
    if (text(block, 1, 5) != "CD001") {
      if (lba < first + 2) continue;
      break;
    }
    anyDescriptor = true;
    if (block[0] == kTerminator) break;
    take(block, &found);
  }
  if (found.primary || found.joliet) return found;
  if (first >= source.sizeInBlocks()) {
    *error = "too short to hold a volume at block " + std::to_string(sessionStart);
  } else if (!anyRead) {
    *error = "block " + std::to_string(first) + " cannot be read";
  } else if (!anyDescriptor) {
    *error = "no ISO-9660 volume at block " + std::to_string(sessionStart);
  } else {
    *error = "the volume descriptors at block " + std::to_string(first) +
             " are damaged or describe blocks that are not of 2048 bytes";
  }
  return std::nullopt;
}

}  // namespace kelvane::isovolume

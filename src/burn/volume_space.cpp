// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/volume_space.h"

#include <QtEndian>
#include <array>
#include <charconv>
#include <fstream>
#include <string_view>

namespace kelvane {
namespace {

constexpr size_t kBlockBytes = 2048;
constexpr std::streamoff kFirstDescriptor = 16;  // ECMA-119 6.2.1: behind the system area.
constexpr int kMostDescriptors = 32;             // mkisofs writes four at the most.
// The place of the volume space size, which stands there in both byte orders (ECMA-119 7.3.3).
constexpr size_t kLittleEndianSize = 80;
constexpr size_t kBigEndianSize = 84;

enum DescriptorType : uint8_t { kPrimary = 1, kSupplementary = 2, kTerminator = 255 };

using Block = std::array<char, kBlockBytes>;

bool isDescriptor(const Block& block) {
  return std::string_view(block.data() + 1, 5) == "CD001";
}

}  // namespace

bool makeVolumesEndWithSession(const std::string& image, uint32_t sessionStart) {
  std::fstream file(image, std::ios::in | std::ios::out | std::ios::binary);
  for (int number = 0; number < kMostDescriptors; ++number) {
    const std::streamoff place = (kFirstDescriptor + number) * std::streamoff{kBlockBytes};
    Block block;
    file.seekg(place);
    if (!file.read(block.data(), kBlockBytes) || !isDescriptor(block)) return false;
    const auto type = static_cast<uint8_t>(block[0]);
    if (type == kTerminator) return number > 0;
    if (type != kPrimary && type != kSupplementary) continue;
    const uint32_t size =
        qFromLittleEndian<uint32_t>(block.data() + kLittleEndianSize) + sessionStart;
    qToLittleEndian(size, block.data() + kLittleEndianSize);
    qToBigEndian(size, block.data() + kBigEndianSize);
    file.seekp(place);
    if (!file.write(block.data(), kBlockBytes).flush()) return false;
  }
  return false;
}

uint32_t sessionStartIn(const std::string& sessionString) {
  const size_t comma = sessionString.find(',');
  if (comma == std::string::npos) return 0;
  uint32_t start = 0;
  std::from_chars(sessionString.data() + comma + 1, sessionString.data() + sessionString.size(),
                  start);
  return start;
}

}  // namespace kelvane

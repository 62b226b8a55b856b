// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/image_composer.h"

#include <algorithm>
#include <fstream>

namespace kelvane::test {
namespace {

constexpr std::size_t kBlock = 2048;

ByteVector both32(std::uint32_t value) {
  ByteVector bytes(8);
  for (unsigned index = 0; index < 4; ++index) {
    bytes[index] = static_cast<std::uint8_t>(value >> (8 * index));
    bytes[7 - index] = bytes[index];
  }
  return bytes;
}

ByteVector textBytes(std::string_view text) {
  return {text.begin(), text.end()};
}

}  // namespace

ByteVector operator+(ByteVector left, const ByteVector& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

ByteVector encode(const RecordSpec& record) {
  const ByteVector date = {120, 1, 2, 3, 4, 5, 0};
  const ByteVector sequence = {1, 0, 0, 1};
  const auto identifierLength = static_cast<std::uint8_t>(record.identifier.size());
  ByteVector bytes = ByteVector{0, record.extendedAttributeLength} + both32(record.extent) +
                     both32(record.length) + date + ByteVector{record.flags, record.unitSize, 0} +
                     sequence + ByteVector{identifierLength} + textBytes(record.identifier);
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  bytes = bytes + record.systemUse;
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  bytes[0] = static_cast<std::uint8_t>(bytes.size());
  return bytes;
}

namespace susp {

ByteVector entry(std::string_view signature, const ByteVector& data) {
  return textBytes(signature) + ByteVector{static_cast<std::uint8_t>(data.size() + 4), 1} + data;
}

ByteVector sharingProtocol(std::uint8_t skip) {
  return entry("SP", {0xBE, 0xEF, skip});
}

ByteVector rockRidgeExtension() {
  return entry("ER", ByteVector{10, 0, 0, 1} + textBytes("RRIP_1991A"));
}

ByteVector posix(std::uint32_t mode, std::uint32_t user, std::uint32_t group) {
  return entry("PX", both32(mode) + both32(1) + both32(user) + both32(group));
}

ByteVector name(std::string_view text, std::uint8_t flags) {
  return entry("NM", ByteVector{flags} + textBytes(text));
}

ByteVector continuation(std::uint32_t block, std::uint32_t offset, std::uint32_t length) {
  return entry("CE", both32(block) + both32(offset) + both32(length));
}

ByteVector childLink(std::uint32_t block) {
  return entry("CL", both32(block));
}

ByteVector relocated() {
  return entry("RE", {});
}

ByteVector link(const std::vector<std::pair<std::uint8_t, std::string>>& components,
                std::uint8_t flags) {
  ByteVector data = {flags};
  for (const auto& [componentFlags, text] : components) {
    data =
        data + ByteVector{componentFlags, static_cast<std::uint8_t>(text.size())} + textBytes(text);
  }
  return entry("SL", data);
}

}  // namespace susp

ByteVector& ImageComposer::blockAt(std::uint32_t block) {
  return content_.try_emplace(block, kBlock).first->second;
}

void ImageComposer::putDescriptors(std::uint32_t block, std::uint32_t rootExtent,
                                   std::uint32_t rootLength) {
  ByteVector primary(kBlock);
  const auto put = [&primary](std::size_t offset, const ByteVector& bytes) {
    std::ranges::copy(bytes, primary.begin() + static_cast<std::ptrdiff_t>(offset));
  };
  put(0, ByteVector{1} + textBytes("CD001") + ByteVector{1});
  put(40, textBytes("COMPOSED                        "));
  put(80, both32(blocks_));
  put(120, {1, 0, 0, 1, 1, 0, 0, 1});
  put(128, {0x00, 0x08, 0x08, 0x00});
  put(132, both32(10) + ByteVector{18, 0, 0, 0});
  put(156, encode({.identifier = std::string(1, '\0'),
                   .extent = rootExtent,
                   .length = rootLength,
                   .flags = kDirectoryFlag}));
  put(881, {1});
  blockAt(block) = primary;
  putBytes(block + 1, 0, ByteVector{255} + textBytes("CD001") + ByteVector{1});
}

std::uint32_t ImageComposer::putDirectory(std::uint32_t block,
                                          const std::vector<RecordSpec>& records,
                                          const ByteVector& systemUseOfSelf) {
  std::vector<ByteVector> encoded;
  for (const RecordSpec& record : records) encoded.push_back(encode(record));
  // Two passes: "." tells the length, which is known when everything has its place.
  std::uint32_t length = 0;
  for (int pass = 0; pass < 2; ++pass) {
    const ByteVector self = encode({.identifier = std::string(1, '\0'),
                                    .extent = block,
                                    .length = length,
                                    .flags = kDirectoryFlag,
                                    .systemUse = systemUseOfSelf});
    const ByteVector parent =
        encode({.identifier = "\1", .extent = block, .length = length, .flags = kDirectoryFlag});
    ByteVector bytes = self + parent;
    for (const ByteVector& record : encoded) {
      if (bytes.size() % kBlock + record.size() > kBlock) {
        bytes.resize((bytes.size() / kBlock + 1) * kBlock);
      }
      bytes = bytes + record;
    }
    length = static_cast<std::uint32_t>((bytes.size() + kBlock - 1) / kBlock * kBlock);
    putBytes(block, 0, bytes);
  }
  return length;
}

void ImageComposer::putBytes(std::uint32_t block, std::uint32_t offset, const ByteVector& bytes) {
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    const std::size_t position = offset + index;
    blockAt(block + static_cast<std::uint32_t>(position / kBlock))[position % kBlock] =
        bytes[index];
  }
}

void ImageComposer::putText(std::uint32_t block, std::string_view text) {
  putBytes(block, 0, textBytes(text));
}

ByteVector ImageComposer::image() const {
  ByteVector image(std::size_t{blocks_} * kBlock);
  for (const auto& [block, bytes] : content_) {
    if (block < blocks_) {
      std::ranges::copy(bytes, image.begin() + static_cast<std::ptrdiff_t>(block * kBlock));
    }
  }
  return image;
}

void ImageComposer::writeSparse(const std::string& path) const {
  std::ofstream file(path, std::ios::binary);
  for (const auto& [block, bytes] : content_) {
    file.seekp(static_cast<std::streamoff>(std::uint64_t{block} * kBlock));
    file.write(reinterpret_cast<const char*>(bytes.data()), kBlock);
  }
  if (!content_.contains(blocks_ - 1)) {
    file.seekp(static_cast<std::streamoff>(std::uint64_t{blocks_} * kBlock - 1));
    file.put('\0');
  }
}

ImageComposer composeVolume(std::uint32_t blocks, Extension extension,
                            const std::vector<RecordSpec>& records) {
  ImageComposer composer(blocks);
  const ByteVector systemUse =
      extension == Extension::rockRidge
          ? susp::sharingProtocol() + susp::rockRidgeExtension() + susp::posix(0040755)
          : ByteVector();
  const std::uint32_t length = composer.putDirectory(kComposedRoot, records, systemUse);
  composer.putDescriptors(16, kComposedRoot, length);
  return composer;
}

}  // namespace kelvane::test

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kelvane::test {

using ByteVector = std::vector<std::uint8_t>;

ByteVector operator+(ByteVector left, const ByteVector& right);

/// A directory record to be written, with everything that may be wrong about it.
struct RecordSpec {
  std::string identifier;
  std::uint32_t extent = 0;
  std::uint32_t length = 0;
  std::uint8_t flags = 0;
  ByteVector systemUse = {};
  std::uint8_t extendedAttributeLength = 0;
  std::uint8_t unitSize = 0;
};
ByteVector encode(const RecordSpec& record);

inline constexpr std::uint8_t kDirectoryFlag = 0x02;
inline constexpr std::uint8_t kAssociatedFlag = 0x04;
inline constexpr std::uint8_t kContinuedFlag = 0x80;

/// Entries of the system use area.
namespace susp {
ByteVector entry(std::string_view signature, const ByteVector& data);
ByteVector sharingProtocol(std::uint8_t skip = 0);
ByteVector rockRidgeExtension();
ByteVector posix(std::uint32_t mode, std::uint32_t user = 0, std::uint32_t group = 0);
ByteVector name(std::string_view text, std::uint8_t flags = 0);
ByteVector continuation(std::uint32_t block, std::uint32_t offset, std::uint32_t length);
ByteVector childLink(std::uint32_t block);
ByteVector relocated();
/// Components as flags and text.
ByteVector link(const std::vector<std::pair<std::uint8_t, std::string>>& components,
                std::uint8_t flags = 0);
}  // namespace susp

/// Writes disc images byte by byte, for what no builder of discs would write. Blocks that are not
/// set are zero.
class ImageComposer {
 public:
  explicit ImageComposer(std::uint32_t blocks) : blocks_(blocks) {}

  /// A primary descriptor at `block` with the root directory's place, and a terminator behind it.
  void putDescriptors(std::uint32_t block, std::uint32_t rootExtent, std::uint32_t rootLength);

  /// A directory of one or more sectors, with "." and ".." first. Returns its length in bytes.
  std::uint32_t putDirectory(std::uint32_t block, const std::vector<RecordSpec>& records,
                             const ByteVector& systemUseOfSelf = {});

  void putBytes(std::uint32_t block, std::uint32_t offset, const ByteVector& bytes);
  void putText(std::uint32_t block, std::string_view text);

  [[nodiscard]] ByteVector image() const;
  /// Writes a file with holes where nothing was put.
  void writeSparse(const std::string& path) const;

 private:
  ByteVector& blockAt(std::uint32_t block);

  std::uint32_t blocks_;
  std::map<std::uint32_t, ByteVector> content_;
};

/// The block of the root directory in the images that composeVolume makes; those behind it are free
/// for the test.
inline constexpr std::uint32_t kComposedRoot = 20;

/// A volume whose root directory is one of `records`. With Rock Ridge the root says so.
enum class Extension { none, rockRidge };
ImageComposer composeVolume(std::uint32_t blocks, Extension extension,
                            const std::vector<RecordSpec>& records);

}  // namespace kelvane::test

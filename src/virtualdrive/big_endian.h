// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace kelvane::virtualdrive {

/// Numbers in command blocks and answers have their most significant byte first.
inline std::uint16_t read16(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

inline std::uint32_t read24(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bytes[at]) << 16 | read16(bytes, at + 1);
}

inline std::uint32_t read32(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint32_t>(read16(bytes, at)) << 16 | read16(bytes, at + 2);
}

/// An answer in the making.
class AnswerBytes {
 public:
  AnswerBytes& u8(unsigned value) {
    bytes_.push_back(static_cast<std::uint8_t>(value));
    return *this;
  }
  AnswerBytes& u16(unsigned value) { return u8(value >> 8).u8(value & 0xFF); }
  AnswerBytes& u32(std::uint32_t value) { return u16(value >> 16).u16(value & 0xFFFF); }
  AnswerBytes& zeros(std::size_t count) {
    bytes_.resize(bytes_.size() + count);
    return *this;
  }
  AnswerBytes& bytes(std::span<const std::uint8_t> more) {
    for (const auto byte : more) bytes_.push_back(byte);
    return *this;
  }
  AnswerBytes& bytes(std::initializer_list<std::uint8_t> more) {
    return bytes(std::span(more.begin(), more.size()));
  }
  /// Exactly `width` characters, filled up with spaces.
  AnswerBytes& text(std::string_view characters, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) {
      u8(i < characters.size() ? static_cast<unsigned char>(characters[i]) : ' ');
    }
    return *this;
  }

  void patch8(std::size_t at, unsigned value) { bytes_[at] = static_cast<std::uint8_t>(value); }
  void patch16(std::size_t at, std::size_t value) {
    bytes_[at] = static_cast<std::uint8_t>(value >> 8);
    bytes_[at + 1] = static_cast<std::uint8_t>(value);
  }
  void patch32(std::size_t at, std::size_t value) {
    patch16(at, value >> 16);
    patch16(at + 2, value);
  }
  std::size_t size() const { return bytes_.size(); }
  std::span<const std::uint8_t> view() const { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace kelvane::virtualdrive

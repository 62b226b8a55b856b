// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "virtualdrive/file_descriptor.h"
#include "virtualdrive/medium_kind.h"
#include "virtualdrive/tool/stop_signals.h"

namespace kelvane::virtualdrive::tool {

/// genisoimage at work: it builds the image of a folder with Rock Ridge and Joliet names, which is
/// read from it as it comes. It is ended with this object.
class ImageBuilder {
 public:
  /// `place` is the address that the image will have on the disc.
  static std::optional<ImageBuilder> start(const std::filesystem::path& folder,
                                           const std::string& label, Lba place, std::string* error);
  ImageBuilder(ImageBuilder&& other) noexcept;
  ImageBuilder& operator=(ImageBuilder&&) = delete;
  ~ImageBuilder();

  /// Fills `buffer` as far as there is image; the bytes read, 0 at the end, -1 on an error or when
  /// a signal wants an end.
  ssize_t read(std::span<std::uint8_t> buffer, const StopSignals& stop);

  /// Waits for the end. False, with a sentence in `error`, unless it went well. What was wrong
  /// stands on stderr.
  bool finish(std::string* error);

 private:
  ImageBuilder(pid_t child, FileDescriptor image) : child_(child), image_(std::move(image)) {}

  pid_t child_;
  FileDescriptor image_;
};

}  // namespace kelvane::virtualdrive::tool

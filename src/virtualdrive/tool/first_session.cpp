// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/first_session.h"

#include <vector>

#include "virtualdrive/tool/image_builder.h"
#include "virtualdrive/tool/session_writer.h"

namespace kelvane::virtualdrive::tool {
namespace {

constexpr std::size_t kSectorsAtOnce = 32;

/// Copies the image to the disc. False with words where the drive refuses, with none where the
/// image just ends early.
bool copyImage(ImageBuilder& builder, SessionWriter& writer, const StopSignals& stop,
               std::string* error) {
  std::vector<std::uint8_t> buffer(kSectorsAtOnce * kSectorBytes);
  while (true) {
    const auto count = builder.read(buffer, stop);
    if (count < 0) return false;
    if (count == 0) return true;
    const auto whole = static_cast<std::size_t>(count) / kSectorBytes * kSectorBytes;
    if (!writer.write(std::span(buffer).first(whole), error)) return false;
    if (whole < buffer.size()) return true;
  }
}

}  // namespace

bool writeFirstSession(const VirtualDrive& drive, const std::filesystem::path& folder,
                       const std::string& label, const StopSignals& stop, std::string* error) {
  SessionWriter writer(drive);
  if (!writer.begin(error)) return false;
  auto builder = ImageBuilder::start(folder, label, error);
  if (!builder) return false;
  if (!copyImage(*builder, writer, stop, error)) {
    if (error->empty())
      *error = stop.stopRequested() ? "Interrupted." : "The image cannot be read.";
    return false;
  }
  if (!builder->finish(error) || !writer.close(error)) return false;
  if (stop.stopRequested()) *error = "Interrupted.";
  return !stop.stopRequested();
}

}  // namespace kelvane::virtualdrive::tool

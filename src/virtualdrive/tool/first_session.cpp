// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/first_session.h"

#include <signal.h>

#include <array>
#include <vector>

#include "virtualdrive/tool/image_builder.h"
#include "virtualdrive/tool/session_writer.h"

namespace kelvane::virtualdrive::tool {
namespace {

constexpr std::size_t kSectorsAtOnce = 32;

volatile bool stopRequested = false;

void requestStop(int) {
  stopRequested = true;
}

/// Has the signals that end a program end the work instead, as long as it lives, so that it can be
/// tidied up.
class StopSignals {
 public:
  StopSignals() {
    struct sigaction action {};
    action.sa_handler = requestStop;
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &action, &before_[i]);
  }
  ~StopSignals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  }
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  static constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, kSignals.size()> before_{};
};

/// Copies the image to the disc. False with words where the drive refuses, with none where the
/// image just ends early.
bool copyImage(ImageBuilder& builder, SessionWriter& writer, std::string* error) {
  std::vector<std::uint8_t> buffer(kSectorsAtOnce * kSectorBytes);
  while (true) {
    const auto count = builder.read(buffer, stopRequested);
    if (count < 0) return false;
    if (count == 0) return true;
    const auto whole = static_cast<std::size_t>(count) / kSectorBytes * kSectorBytes;
    if (!writer.write(std::span(buffer).first(whole), error)) return false;
    if (whole < buffer.size()) return true;
  }
}

}  // namespace

bool writeFirstSession(const VirtualDrive& drive, const std::filesystem::path& folder,
                       const std::string& label, std::string* error) {
  const StopSignals stopSignals;
  SessionWriter writer(drive);
  if (!writer.begin(error)) return false;
  auto builder = ImageBuilder::start(folder, label, error);
  if (!builder) return false;
  if (!copyImage(*builder, writer, error)) {
    if (error->empty()) *error = stopRequested ? "Interrupted." : "The image cannot be read.";
    return false;
  }
  return builder->finish(error) && writer.close(error);
}

}  // namespace kelvane::virtualdrive::tool

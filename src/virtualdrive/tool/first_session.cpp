// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/first_session.h"

#include <fstream>

#include "virtualdrive/tool/image_builder.h"

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

bool writeData(const FirstContent& content, SessionWriter& writer, const StopSignals& stop,
               std::string* error) {
  if (!writer.begin(TrackForm::Mode1, error)) return false;
  auto builder = ImageBuilder::start(*content.folder, content.label, writer.next(), error);
  if (!builder) return false;
  if (!copyImage(*builder, writer, stop, error)) {
    if (error->empty())
      *error = stop.stopRequested() ? "Interrupted." : "The image cannot be read.";
    return false;
  }
  return builder->finish(error) && writer.endTrack(error);
}

/// The last sector is filled up with silence.
bool writeAudio(const std::filesystem::path& file, SessionWriter& writer, const StopSignals& stop,
                std::string* error) {
  std::ifstream sound(file, std::ios::binary);
  if (!writer.begin(TrackForm::Audio, error)) return false;
  std::vector<std::uint8_t> buffer(kSectorsAtOnce * kAudioSectorBytes);
  while (!stop.stopRequested()) {
    sound.read(reinterpret_cast<char*>(buffer.data()), static_cast<std::streamsize>(buffer.size()));
    const auto count = static_cast<std::size_t>(sound.gcount());
    if (count == 0) break;
    const auto whole = (count + kAudioSectorBytes - 1) / kAudioSectorBytes * kAudioSectorBytes;
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(count), buffer.end(), std::uint8_t{0});
    if (!writer.write(std::span(buffer).first(whole), error)) return false;
  }
  if (sound.eof()) return writer.endTrack(error);
  *error = stop.stopRequested() ? "Interrupted." : "“" + file.string() + "” cannot be read.";
  return false;
}

bool writeAudioTracks(const FirstContent& content, SessionWriter& writer, const StopSignals& stop,
                      std::string* error) {
  for (const auto& file : content.audio) {
    if (!writeAudio(file, writer, stop, error)) return false;
  }
  return true;
}

bool writeSessions(const VirtualDrive& drive, const FirstContent& content, const StopSignals& stop,
                   std::string* error) {
  const bool audioFirst = content.audioPlace == AudioPlace::OwnSession && content.folder;
  if (audioFirst) {
    SessionWriter writer(drive, SessionEnd::Appendable);
    if (!writeAudioTracks(content, writer, stop, error) || !writer.closeSession(error)) {
      return false;
    }
  }
  SessionWriter writer(drive, content.end);
  if (content.folder && !writeData(content, writer, stop, error)) return false;
  if (!audioFirst && !writeAudioTracks(content, writer, stop, error)) return false;
  return writer.closeSession(error);
}

}  // namespace

bool writeFirstContent(const VirtualDrive& drive, const FirstContent& content,
                       const StopSignals& stop, std::string* error) {
  if (!writeSessions(drive, content, stop, error)) return false;
  if (stop.stopRequested()) *error = "Interrupted.";
  return !stop.stopRequested();
}

}  // namespace kelvane::virtualdrive::tool

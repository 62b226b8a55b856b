// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/image_builder.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace kelvane::virtualdrive::tool {
namespace {

std::vector<std::string> argumentsFor(const std::filesystem::path& folder, const std::string& label,
                                      Lba place) {
  std::vector<std::string> arguments{"genisoimage",  "-quiet",         "-D",    "-r", "-J",
                                     "-joliet-long", "-input-charset", "utf-8", "-V", label};
  // Where no image is named to go on from, the first number means nothing.
  if (place > 0) arguments.insert(arguments.end(), {"-C", "0," + std::to_string(place)});
  arguments.push_back(std::filesystem::absolute(folder).string());
  return arguments;
}

}  // namespace

std::optional<ImageBuilder> ImageBuilder::start(const std::filesystem::path& folder,
                                                const std::string& label, Lba place,
                                                std::string* error) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    *error = std::string("No pipe can be made: ") + std::strerror(errno) + ".";
    return std::nullopt;
  }
  FileDescriptor readEnd(ends[0]);
  const FileDescriptor writeEnd(ends[1]);
  auto arguments = argumentsFor(folder, label, place);
  std::vector<char*> words;
  words.reserve(arguments.size() + 1);
  for (auto& argument : arguments) words.push_back(argument.data());
  words.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, writeEnd.get(), STDOUT_FILENO);
  pid_t child = 0;
  const int failure = posix_spawnp(&child, words.front(), &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) {
    *error = std::string("genisoimage cannot be started: ") + std::strerror(failure) + ".";
    return std::nullopt;
  }
  return ImageBuilder(child, std::move(readEnd));
}

ImageBuilder::ImageBuilder(ImageBuilder&& other) noexcept
    : child_(std::exchange(other.child_, 0)), image_(std::move(other.image_)) {}

ImageBuilder::~ImageBuilder() {
  if (child_ == 0) return;
  kill(child_, SIGTERM);
  while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

ssize_t ImageBuilder::read(std::span<std::uint8_t> buffer, const StopSignals& stop) {
  std::size_t have = 0;
  while (have < buffer.size()) {
    const auto count = ::read(image_.get(), buffer.data() + have, buffer.size() - have);
    if (stop.stopRequested() || (count < 0 && errno != EINTR)) return -1;
    if (count == 0) break;
    if (count > 0) have += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(have);
}

bool ImageBuilder::finish(std::string* error) {
  int status = 0;
  while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
  }
  child_ = 0;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return true;
  *error = "genisoimage could not build the first session.";
  return false;
}

}  // namespace kelvane::virtualdrive::tool

// SPDX-License-Identifier: GPL-2.0-or-later
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "virtualdrive/shim_environment.h"
#include "virtualdrive/tool/commands.h"

namespace kelvane::virtualdrive::tool {
namespace {

constexpr int kCannotExecute = 126;
constexpr int kNotFound = 127;

/// The folder of the programs and libraries that are not for users, from the place of this program.
std::filesystem::path libexecFolder() {
  std::error_code failure;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
  return program.parent_path().parent_path() / "libexec" / "kelvanefs";
}

}  // namespace

int runWithDisc(const std::filesystem::path& disc, const std::string& device,
                const std::vector<std::string>& command) {
  const auto drive = openDisc(disc);
  if (!drive) return kDiscUnusable;
  std::string error;
  const auto variables = shimEnvironment(libexecFolder(), drive->folder(), device, &error);
  if (!variables) return complain(error), kFailed;
  if (!drive->insertDisc(&error)) return complain(error), kDiscUnusable;
  for (const auto& variable : *variables) {
    setenv(variable.name.c_str(), variable.value.c_str(), 1);
  }
  setenv("KELVANEDISC_DEVICE", device.c_str(), 1);
  std::vector<std::string> copies = command;
  std::vector<char*> words;
  words.reserve(copies.size() + 1);
  for (auto& word : copies) words.push_back(word.data());
  words.push_back(nullptr);
  execvp(words.front(), words.data());
  const int why = errno;
  complain(command.front() + ": " + std::strerror(why));
  return why == ENOENT ? kNotFound : kCannotExecute;
}

}  // namespace kelvane::virtualdrive::tool

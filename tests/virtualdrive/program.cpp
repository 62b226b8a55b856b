// SPDX-License-Identifier: GPL-2.0-or-later
#include "program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "temporary_folder.h"

namespace kelvane::virtualdrive {
namespace {

/// In the child: never returns.
[[noreturn]] void execute(const std::vector<std::string>& command, const ProgramOptions& options,
                          const std::filesystem::path& streams) {
  const int in = open((streams / "in").c_str(), O_RDONLY);
  const int out = open((streams / "out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int err = open((streams / "err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(in, STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  if (!options.folder.empty() && chdir(options.folder.c_str()) != 0) _exit(125);
  setenv("LC_ALL", "C.UTF-8", 1);
  std::vector<std::string> copies = command;
  std::vector<char*> words;
  words.reserve(copies.size() + 1);
  for (auto& word : copies) words.push_back(word.data());
  words.push_back(nullptr);
  execvp(words.front(), words.data());
  _exit(127);
}

}  // namespace

Finished runProgram(const std::vector<std::string>& command, const ProgramOptions& options) {
  const TemporaryFolder streams;
  writeFile(streams / "in", options.input);
  const auto child = fork();
  if (child == 0) execute(command, options, streams.path());
  int status = 0;
  if (waitpid(child, &status, 0) != child) ADD_FAILURE() << "lost " << command.front();
  Finished finished;
  finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  finished.out = contentOf(streams / "out");
  finished.err = contentOf(streams / "err");
  return finished;
}

Finished kelvanedisc(std::vector<std::string> arguments, const ProgramOptions& options) {
  arguments.insert(arguments.begin(), KELVANE_BIN_DIR "/kelvanedisc");
  return runProgram(arguments, options);
}

}  // namespace kelvane::virtualdrive

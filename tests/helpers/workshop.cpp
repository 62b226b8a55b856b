// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/workshop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace kelvane::test {

namespace fs = std::filesystem;

Workshop::Workshop() {
  std::string pattern = (fs::temp_directory_path() / "kelvane-helpers-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary directory";
  path_ = pattern;
}

Workshop::~Workshop() {
  std::error_code ignored;
  for (fs::recursive_directory_iterator entry(path_, fs::directory_options::skip_permission_denied,
                                              ignored);
       !ignored && entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
    if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
  }
  fs::remove_all(path_, ignored);
}

RunResult run(const std::vector<std::string>& words) {
  const Workshop streams;
  const std::string outputPath = streams / "output";
  const std::string errorsPath = streams / "errors";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputPath.c_str(), O_WRONLY | O_CREAT,
                                   0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errorsPath.c_str(), O_WRONLY | O_CREAT,
                                   0600);
  std::vector<char*> arguments;
  std::vector<std::string> copies = words;
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  RunResult result;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = readFile(outputPath);
    result.errors = readFile(errorsPath);
  }
  posix_spawn_file_actions_destroy(&actions);
  return result;
}

std::string mustRun(const std::vector<std::string>& words) {
  RunResult result = run(words);
  EXPECT_EQ(result.status, 0) << words.front() << ": " << result.errors;
  return std::move(result.output);
}

void writeFile(const fs::path& path, std::string_view content) {
  std::ofstream file(path, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  EXPECT_TRUE(file.good()) << path;
}

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return std::move(content).str();
}

void setModificationTime(const fs::path& path, std::int64_t seconds) {
  const timespec times[2] = {{.tv_sec = seconds, .tv_nsec = 0}, {.tv_sec = seconds, .tv_nsec = 0}};
  EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

}  // namespace kelvane::test

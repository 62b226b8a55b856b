// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isomount/detached_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace kelvane::isomount {
namespace {

// Marks that no text contains.
constexpr char kMounted = '\1';
constexpr char kReady = '\2';

void detach(int reportDescriptor) {
  setsid();
  if (chdir("/") != 0) _exit(1);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nothing < 0) _exit(1);
  dup2(nothing, STDIN_FILENO);
  dup2(nothing, STDOUT_FILENO);
  dup2(reportDescriptor, STDERR_FILENO);
  close(nothing);
}

/// Of several, the last line tells the reason: libfuse first says why it had to ask fusermount3,
/// which then says why it failed.
std::string lastLine(std::string_view text) {
  const std::size_t end = text.find_last_not_of('\n');
  if (end == std::string_view::npos) return {};
  text = text.substr(0, end + 1);
  return std::string(text.substr(text.rfind('\n') + 1));
}

StartOutcome receive(int descriptor) {
  StartOutcome outcome;
  std::string text;
  char character = 0;
  for (;;) {
    const ssize_t got = read(descriptor, &character, 1);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    if (character == kReady) {
      outcome.ready = true;
      break;
    }
    if (character == kMounted) {
      outcome.mounted = true;
    } else {
      text += character;
    }
  }
  outcome.words = lastLine(text);
  return outcome;
}

}  // namespace

StartReport::~StartReport() {
  if (descriptor_ >= 0) close(descriptor_);
}

void StartReport::send(char mark) {
  while (descriptor_ >= 0 && write(descriptor_, &mark, 1) < 0 && errno == EINTR) {
  }
}

void StartReport::mounted() {
  send(kMounted);
}

void StartReport::ready() {
  if (descriptor_ < 0) return;
  send(kReady);
  // Nobody listens from here on. The descriptor takes the place of standard error's as well.
  dup2(STDOUT_FILENO, STDERR_FILENO);
  close(descriptor_);
  descriptor_ = -1;
}

StartOutcome startDetached(const std::function<int(StartReport&)>& work) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) return {.words = std::strerror(errno)};
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    detach(ends[1]);
    int result = 0;
    {
      StartReport report(ends[1]);
      result = work(report);
    }
    _exit(result);
  }
  close(ends[1]);
  StartOutcome outcome;
  if (child < 0) {
    outcome.words = std::strerror(errno);
  } else {
    outcome = receive(ends[0]);
    if (!outcome.ready) waitpid(child, nullptr, 0);
  }
  close(ends[0]);
  return outcome;
}

}  // namespace kelvane::isomount

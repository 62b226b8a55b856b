// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/system_log.h"

#include <syslog.h>

#include <cstdio>
#include <mutex>
#include <utility>

namespace kelvane {
namespace {

std::mutex logMutex;
std::function<void(const std::string&)> redirectedSink;  // Guarded by logMutex.

std::string asOneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  for (const char character : text) {
    if (character == '\n') {
      line += "\\n";
    } else {
      line += character;
    }
  }
  return line;
}

}  // namespace

void writeToSystemLog(std::string_view text) {
  const std::string line = asOneLine(text);
  const std::lock_guard lock(logMutex);
  if (redirectedSink) {
    redirectedSink(line);
    return;
  }
  syslog(LOG_USER | LOG_NOTICE, "%s", line.c_str());
  std::fprintf(stderr, "kelvanefs: %s\n", line.c_str());
}

SystemLogRedirection::SystemLogRedirection(std::function<void(const std::string&)> sink) {
  const std::lock_guard lock(logMutex);
  redirectedSink = std::move(sink);
}

SystemLogRedirection::~SystemLogRedirection() {
  const std::lock_guard lock(logMutex);
  redirectedSink = nullptr;
}

}  // namespace kelvane

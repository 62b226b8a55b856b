// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/fuse_log_capture.h"

#define FUSE_USE_VERSION 314
#include <fuse_log.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "platform/foundation/system_log.h"

namespace kelvane::userfs {
namespace {

thread_local std::string* collected = nullptr;

__attribute__((format(printf, 2, 0))) void takeLine(enum fuse_log_level level, const char* format,
                                                    va_list arguments) {
  std::array<char, 1024> line;
  const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
  if (length <= 0) return;
  if (collected != nullptr) {
    *collected += line.data();
  } else if (level <= FUSE_LOG_WARNING) {
    writeToSystemLog(line.data());
  }
}

std::string withoutTrailingLineFeeds(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

FuseLogCapture::FuseLogCapture() {
  static std::once_flag once;
  std::call_once(once, [] { fuse_set_log_func(takeLine); });
  collected = &text_;
}

FuseLogCapture::~FuseLogCapture() {
  collected = nullptr;
}

std::string FuseLogCapture::text() const {
  return withoutTrailingLineFeeds(text_);
}

}  // namespace kelvane::userfs

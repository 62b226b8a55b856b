// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane::userfs {

/// While it lives, what libfuse logs on this thread is collected instead of printed. What it logs
/// elsewhere goes to the system log.
class FuseLogCapture {
 public:
  FuseLogCapture();
  ~FuseLogCapture();
  FuseLogCapture(const FuseLogCapture&) = delete;
  FuseLogCapture& operator=(const FuseLogCapture&) = delete;

  /// What has come so far, without line feeds at its end.
  std::string text() const;

 private:
  std::string text_;
};

}  // namespace kelvane::userfs

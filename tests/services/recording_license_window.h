// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "services/license_window.h"

namespace kelvane::test {

/// A licence window that notes, in order, what is done to it. Its modal session lasts as long as
/// `whileModal`, which plays the user.
class RecordingLicenseWindow : public LicenseWindow {
 public:
  void setActions(LicenseActions* newActions) override { actions = newActions; }
  void setLicenseText(const std::string& html) override {
    calls.emplace_back("text");
    text = html;
  }
  void runModal() override {
    calls.emplace_back("modal");
    if (whileModal) whileModal();
    calls.emplace_back("end of modal");
  }
  void stopModal() override { calls.emplace_back("stop"); }
  void orderOut() override { calls.emplace_back("out"); }

  LicenseActions* actions = nullptr;
  std::string text = "something else";
  std::vector<std::string> calls;
  std::function<void()> whileModal;
};

}  // namespace kelvane::test

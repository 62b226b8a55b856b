// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/main_window.h"

namespace kelvane::testing {

/// A state that a user can find the window in, from sample data.
struct WindowState {
  std::string name;
  /// Leads a window from its first state into this one, and gives the window or sheet to look at.
  std::function<QWidget*(MainWindow& window)> enter;
};

/// Every state, the alerts by the name of their message.
const std::vector<WindowState>& windowStates();

/// Leads a window back from any of these states into the first one.
void leaveState(MainWindow& window);

/// Nothing slides while it lives, so what is looked at stands where it belongs.
class Stillness {
 public:
  Stillness();
  ~Stillness();
  Stillness(const Stillness&) = delete;
  Stillness& operator=(const Stillness&) = delete;
};

/// Speaks another language than English while it lives.
class Language {
 public:
  explicit Language(const std::string& language);
  ~Language();
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;
};

}  // namespace kelvane::testing

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/desktop/patience.h"

namespace kelvane::desktop {

/// Whether the user wants programs to do without animations, as the desktop's portal tells
/// (org.freedesktop.portal.Settings): "reduced-motion" of org.freedesktop.appearance, and what
/// GNOME had before that, "enable-animations" of org.gnome.desktop.interface.
///
/// Where there is no portal, or it knows neither, nothing is ever heard. Main thread only; nothing
/// blocks.
class MotionSetting {
 public:
  /// `heard` is called with each answer and change.
  explicit MotionSetting(std::function<void(bool lessMotion)> heard,
                         std::chrono::milliseconds patience = kPatience);
  ~MotionSetting();
  MotionSetting(const MotionSetting&) = delete;
  MotionSetting& operator=(const MotionSetting&) = delete;

 private:
  class Listener;
  std::unique_ptr<Listener> listener_;
};

}  // namespace kelvane::desktop

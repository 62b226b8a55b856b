// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>
#include <chrono>
#include <functional>
#include <string>

#include "platform/desktop/patience.h"

namespace kelvane::desktop {

/// What the user is told about.
struct Notice {
  enum class Kind { Success, Failure };

  Kind kind = Kind::Success;
  std::string summary;  ///< One line, plain text.
  std::string body;     ///< Plain text; may be empty.
};

/// The desktop's notifications (org.freedesktop.Notifications), of which the application shows one
/// at a time: a new one takes the place of the one before. Where there is no such service nothing
/// happens. Main thread only; nothing blocks.
class Notifications : public QObject {
  Q_OBJECT

 public:
  /// `activated` is called when the user clicks on a notification of this object.
  explicit Notifications(std::function<void()> activated, QObject* parent = nullptr);

  void show(const Notice& notice, std::chrono::milliseconds patience = kPatience);

 private Q_SLOTS:
  void actionInvoked(uint id, const QString& action);

 private:
  void listen();

  std::function<void()> activated_;
  QString listensTo_;  ///< The name of the connection whose signals are heard; empty for none.
  uint shownId_ = 0;   ///< As the service calls it; 0 for none.
};

}  // namespace kelvane::desktop

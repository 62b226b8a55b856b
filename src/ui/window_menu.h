// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QToolButton>
#include <functional>

class QAction;
class QMenu;

namespace kelvane {

/// The button at the end of the header behind which the window's menu is found: what concerns the
/// application, and what can be done with the open disc besides. F10 opens it. The shortcuts of its
/// entries work while the window has the keyboard.
class WindowMenu : public QToolButton {
  Q_OBJECT

 public:
  explicit WindowMenu(QWidget* parent);

  /// Adds an entry, and its shortcut to `window`. This widget owns it.
  QAction* addEntry(QWidget& window, const char* name, const char* textKey,
                    const QKeySequence& shortcut, const std::function<void()>& chosen);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QMenu* menu_;  // A child of this widget.
};

}  // namespace kelvane

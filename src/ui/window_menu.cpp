// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/window_menu.h"

#include <QAction>
#include <QMenu>
#include <QShortcut>
#include <QStyleOptionToolButton>
#include <QStylePainter>

#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

// In points.
constexpr double kButtonSize = 26;
constexpr double kLineLength = 14;
constexpr double kLineDistance = 4;
constexpr double kLineWidth = 1.6;

}  // namespace

WindowMenu::WindowMenu(QWidget* parent) : QToolButton(parent), menu_(new QMenu(this)) {
  setObjectName(QStringLiteral("windowMenuButton"));
  setAccessibleName(localizedText("WindowMenu"));
  setToolTip(localizedText("WindowMenu"));
  setAutoRaise(true);
  setFocusPolicy(Qt::StrongFocus);
  setPopupMode(InstantPopup);
  setMenu(menu_);
  menu_->setObjectName(QStringLiteral("windowMenu"));
  menu_->setAccessibleName(localizedText("WindowMenu"));
  const int side = toPixels(kButtonSize, font());
  setFixedSize(side, side);
  connect(new QShortcut(Qt::Key_F10, parent->window()), &QShortcut::activated, this,
          &QToolButton::showMenu);
}

QAction* WindowMenu::addEntry(QWidget& window, const char* name, const char* textKey,
                              const QKeySequence& shortcut, const std::function<void()>& chosen) {
  auto* entry = new QAction(localizedText(textKey), this);
  entry->setObjectName(QLatin1String(name));
  entry->setShortcut(shortcut);
  entry->setShortcutVisibleInContextMenu(true);
  connect(entry, &QAction::triggered, this, chosen);
  menu_->addAction(entry);
  window.addAction(entry);
  return entry;
}

// Three lines, drawn with the pen of the palette: icon themes differ in whether they have such a
// picture, and in whether it can be seen on a dark ground.
void WindowMenu::paintEvent(QPaintEvent* event) {
  Q_UNUSED(event);
  QStylePainter painter(this);
  QStyleOptionToolButton option;
  initStyleOption(&option);
  option.features &= ~QStyleOptionToolButton::HasMenu;
  painter.drawComplexControl(QStyle::CC_ToolButton, option);

  const double scale = pixelsPerPoint(font());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(
      QPen(palette().color(QPalette::WindowText), kLineWidth * scale, Qt::SolidLine, Qt::RoundCap));
  const QPointF middle = QRectF(rect()).center();
  const double half = kLineLength * scale / 2;
  for (const int line : {-1, 0, 1}) {
    const double y = middle.y() + line * kLineDistance * scale;
    painter.drawLine(QPointF(middle.x() - half, y), QPointF(middle.x() + half, y));
  }
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/roomy_button.h"

#include "ui/view_parts.h"

namespace kelvane {
namespace {

constexpr int kSidePadding = 14;  // Pixels, at least, on each side of the text.

}  // namespace

RoomyButton::RoomyButton(QWidget* parent) : QPushButton(parent) {
  setAutoDefault(true);
}

void RoomyButton::setCaption(const QString& caption) {
  setText(caption);
  setAccessibleName(withoutMnemonicMark(caption));
}

QSize RoomyButton::sizeHint() const {
  const QSize styled = QPushButton::sizeHint();
  const int textWidth = fontMetrics().horizontalAdvance(accessibleName());
  return styled.expandedTo(QSize(textWidth + 2 * kSidePadding, 0));
}

}  // namespace kelvane

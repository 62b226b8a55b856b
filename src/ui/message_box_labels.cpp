// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/message_box_labels.h"

#include <QLabel>
#include <QMessageBox>

#include "ui/view_parts.h"

namespace kelvane {
namespace {

const char* iconNameKey(QMessageBox::Icon icon) {
  switch (icon) {
    case QMessageBox::Information:
      return "AccessibleInformation";
    case QMessageBox::Question:
      return "AccessibleQuestion";
    case QMessageBox::Critical:
      return "AccessibleError";
    case QMessageBox::NoIcon:
    case QMessageBox::Warning:
      break;
  }
  return "AccessibleWarning";
}

}  // namespace

// What a drive or program said may look like markup and is none. The labels bear these names in
// every version of the toolkit so far; a box without them merely looks and sounds plainer.
void adaptLabels(QMessageBox& box) {
  if (auto* icon = box.findChild<QLabel*>(QStringLiteral("qt_msgboxex_icon_label"))) {
    icon->setAccessibleName(localizedText(iconNameKey(box.icon())));
  }
  if (auto* message = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
    QFont bold = message->font();
    bold.setBold(true);
    message->setFont(bold);
  }
  if (auto* informative = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
    informative->setTextFormat(Qt::PlainText);
  }
}

}  // namespace kelvane

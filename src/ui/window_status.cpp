// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/window_status.h"

#include <QStringList>
#include <QWidget>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {

WindowStatus::WindowStatus(QWidget& window) : window_(window) {
  show();
}

void WindowStatus::setOpenDisc(const QString& volumeName) {
  openDisc_ = volumeName;
  show();
}

void WindowStatus::setPercent(std::optional<int> percent) {
  percent_ = percent;
  if (percent_) {
    launcher_.show(*percent_ / 100.0);
  } else {
    launcher_.show(std::nullopt);
  }
  show();
}

// What changes comes first: a task bar shows the beginning.
void WindowStatus::show() {
  QStringList parts;
  if (percent_) {
    parts << QString::fromStdString(format(localizedString("BurnPercent"), *percent_));
  }
  if (!openDisc_.isEmpty()) parts << openDisc_;
  parts << QStringLiteral("KelvaneFS");
  window_.setWindowTitle(parts.join(QStringLiteral(" – ")));
}

}  // namespace kelvane

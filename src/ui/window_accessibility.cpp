// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/window_accessibility.h"

#include <QAccessibleWidget>
#include <QWidget>

namespace kelvane {
namespace {

QAccessibleInterface* windowInterface(const QString& className, QObject* object) {
  if (className != QLatin1String("kelvane::MainWindow")) return nullptr;
  return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Window);
}

}  // namespace

void installWindowAccessibility() {
  static const bool installed = [] {
    QAccessible::installFactory(windowInterface);
    return true;
  }();
  Q_UNUSED(installed);
}

}  // namespace kelvane

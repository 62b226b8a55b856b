// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/main_thread.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <utility>

namespace kelvane {

void performOnMainThread(std::function<void()> work) {
  QCoreApplication* application = QCoreApplication::instance();
  if (application == nullptr) return;
  QMetaObject::invokeMethod(application, std::move(work), Qt::QueuedConnection);
}

void performAfterDelay(std::chrono::milliseconds delay, std::function<void()> work) {
  QTimer::singleShot(delay, QCoreApplication::instance(), std::move(work));
}

bool isMainThread() {
  const QCoreApplication* application = QCoreApplication::instance();
  return application != nullptr && QThread::currentThread() == application->thread();
}

}  // namespace kelvane

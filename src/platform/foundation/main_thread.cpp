// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/main_thread.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

namespace kelvane {

void performOnMainThread(std::function<void()> work) {
  QCoreApplication* application = QCoreApplication::instance();
  if (application == nullptr) return;
  QMetaObject::invokeMethod(application, std::move(work), Qt::QueuedConnection);
}

void performOnMainThreadAndWait(std::function<void()> work, const std::stop_token& stop) {
  struct Completion {
    std::mutex mutex;
    std::condition_variable_any changed;
    bool done = false;  // Guarded by the mutex.
  };
  // The queue may keep its copy longer than this function runs.
  const auto completion = std::make_shared<Completion>();
  performOnMainThread([completion, stop, work = std::move(work)] {
    if (!stop.stop_requested()) work();
    const std::lock_guard lock(completion->mutex);
    completion->done = true;
    completion->changed.notify_all();
  });
  std::unique_lock lock(completion->mutex);
  completion->changed.wait(lock, stop, [&completion] { return completion->done; });
}

void performAfterDelay(std::chrono::milliseconds delay, std::function<void()> work) {
  QTimer::singleShot(delay, QCoreApplication::instance(), std::move(work));
}

bool isMainThread() {
  const QCoreApplication* application = QCoreApplication::instance();
  return application != nullptr && QThread::currentThread() == application->thread();
}

}  // namespace kelvane

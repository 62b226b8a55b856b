// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/progress_watcher.h"

#include <sys/stat.h>

#include <QTimer>
#include <chrono>

#include "platform/foundation/main_thread.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kPollInterval{200};

}  // namespace

ProgressWatcher::ProgressWatcher() : self_(std::make_shared<ProgressWatcher*>(this)) {}

ProgressWatcher::~ProgressWatcher() = default;

void ProgressWatcher::startWatching(const std::string& path, double target,
                                    ProgressIndicator* bar) {
  filePath = path;
  indicator = bar;
  targetSize = target;
  progressTimer = std::make_unique<QTimer>();
  QObject::connect(progressTimer.get(), &QTimer::timeout, [this] { checkProgress(); });
  progressTimer->start(kPollInterval);
}

void ProgressWatcher::stopWatching() {
  progressTimer.reset();
}

void ProgressWatcher::checkProgress() {
  struct stat status {};
  if (stat(filePath.c_str(), &status) != 0) return;
  // The size is taken in single precision: a bar needs no more.
  const double size = static_cast<double>(static_cast<float>(status.st_size));
  const double fraction = size / targetSize;
  if (fraction == progress) return;
  progress = fraction;
  performOnMainThread([self = std::weak_ptr(self_)] {
    if (const auto watcher = self.lock()) (*watcher)->updateIndicator();
  });
}

void ProgressWatcher::updateIndicator() {
  if (indicator == nullptr) return;
  indicator->setIndeterminate(false);
  indicator->setDoubleValue(progress);
}

}  // namespace kelvane

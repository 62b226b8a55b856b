// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/media_controller.h"

#include <utility>

namespace kelvane {

void MediaController::removeArrangedObjects() {
  {
    const std::lock_guard lock(mutex_);
    arrangedObjects_.clear();
  }
  announce();
}

void MediaController::addObjects(std::vector<DeviceRecord> records) {
  {
    const std::lock_guard lock(mutex_);
    for (DeviceRecord& record : records) arrangedObjects_.push_back(std::move(record));
    if (selectionIndex_ && *selectionIndex_ >= arrangedObjects_.size()) selectionIndex_.reset();
  }
  announce();
}

std::optional<size_t> MediaController::selectionIndex() const {
  const std::lock_guard lock(mutex_);
  return selectionIndex_;
}

void MediaController::setSelectionIndex(std::optional<size_t> index) {
  {
    const std::lock_guard lock(mutex_);
    selectionIndex_ = index;
  }
  announce();
}

std::vector<DeviceRecord> MediaController::selectedObjects() const {
  const std::lock_guard lock(mutex_);
  if (!selectionIndex_ || *selectionIndex_ >= arrangedObjects_.size()) return {};
  return {arrangedObjects_[*selectionIndex_]};
}

void MediaController::setChangeHandler(std::function<void()> handler) {
  changeHandler_ = std::move(handler);
}

void MediaController::announce() {
  if (changeHandler_) changeHandler_();
}

}  // namespace kelvane

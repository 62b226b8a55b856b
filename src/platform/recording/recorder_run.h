// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/foundation/child_task.h"
#include "platform/recording/dr_burn_status.h"

namespace kelvane {

class DRDevice;

/// What the recorder is to do.
struct RecorderOrder {
  enum class Task { Write, Erase };

  Task task = Task::Write;
  // The rest belongs to writing alone.
  std::string imagePath = {};
  bool appendable = false;
  bool underrunProtection = true;
  /// Kilobytes (1000 bytes) a second; absent: as fast as possible.
  std::optional<float> speed = {};
};

/// One run of the recorder program: starts it, follows its messages, and tells how it ended.
///
/// The recorder runs in a session of its own and outlives this object and this process. Main thread
/// only.
class RecorderRun {
 public:
  /// The drive is that of `device`, which must have one; borrowed for as long as this object lives.
  /// `handler` gets each new status, from the event loop; the last one, exactly once, has the state
  /// DRStatusStateDone or DRStatusStateFailed, and the recorder has ended then. It must not destroy
  /// the object.
  RecorderRun(DRDevice& device, const RecorderOrder& order,
              std::function<void(const DRBurnStatus&)> handler);

  /// Starts the recorder. Gives a sentence where that fails, and the handler hears nothing; empty
  /// where it succeeds.
  std::string start();

  int64_t processIdentifier() const;

 private:
  void receive(const std::string& line);
  void finish();
  std::string describeEnd();

  DRDevice& device_;
  const RecorderOrder::Task kind_;
  ChildTask task_;
  std::function<void(const DRBurnStatus&)> handler_;
  std::optional<DRBurnStatus> result_;
};

}  // namespace kelvane

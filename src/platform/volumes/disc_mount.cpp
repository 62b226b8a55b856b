// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/disc_mount.h"

#include <utility>
#include <vector>

#include "platform/foundation/bundle.h"
#include "platform/foundation/system_log.h"
#include "platform/volumes/device_resolver.h"

namespace kelvane {
namespace {

constexpr int kMountLimitMilliseconds = 30000;

std::string withoutTrailingLineFeeds(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

// A task that runs the volume's program on the drive's disc with these further arguments. Null,
// with a sentence in `error`, where drive or program are not there.
std::unique_ptr<ChildTask> isomountTask(const std::string& bsdName, int64_t sessionStart,
                                        std::vector<std::string> furtherArguments,
                                        std::string* error) {
  const std::optional<ResolvedDevice> device = resolveDevice(bsdName);
  if (!device) {
    *error = format("There is no drive %@.", bsdName);
    return nullptr;
  }
  const std::optional<std::string> program =
      Bundle::mainBundle().pathForAuxiliaryExecutable("isomount");
  if (!program) {
    *error = "The program isomount is missing from this installation.";
    return nullptr;
  }
  std::vector<std::string> arguments = {"--source", device->path, "--session",
                                        std::to_string(sessionStart)};
  for (std::string& argument : furtherArguments) arguments.push_back(std::move(argument));
  auto task = std::make_unique<ChildTask>();
  task->setLaunchPath(*program);
  task->setArguments(std::move(arguments));
  return task;
}

std::unique_ptr<ChildTask> mountingTask(const DiscMount& mount, std::string* error) {
  std::unique_ptr<ChildTask> task =
      isomountTask(mount.bsdName, mount.sessionStart,
                   {"--fsname", "/dev/" + mount.bsdName, mount.mountPoint}, error);
  if (task != nullptr && !task->launch()) {
    *error = task->launchError();
    return nullptr;
  }
  return task;
}

}  // namespace

bool mountDisc(const DiscMount& mount, std::string* error) {
  const std::unique_ptr<ChildTask> task = mountingTask(mount, error);
  if (task == nullptr) return false;
  if (!task->waitBlocking(kMountLimitMilliseconds)) {
    *error = "The volume does not answer.";
    return false;
  }
  if (task->terminationStatus() == 0) return true;
  *error = withoutTrailingLineFeeds(task->readStandardErrorToEnd());
  return false;
}

std::unique_ptr<ChildTask> startMountingDisc(const DiscMount& mount) {
  std::string error;
  std::unique_ptr<ChildTask> task = mountingTask(mount, &error);
  if (task == nullptr) systemLog("mounting %@ failed: %@", mount.bsdName, error);
  return task;
}

std::optional<std::string> volumeNameOfDisc(const std::string& bsdName, int64_t sessionStart) {
  std::string error;
  const std::unique_ptr<ChildTask> task =
      isomountTask(bsdName, sessionStart, {"--print-volume-id"}, &error);
  if (task == nullptr || !task->launch()) return std::nullopt;
  if (!task->waitBlocking(kMountLimitMilliseconds) || task->terminationStatus() != 0) {
    return std::nullopt;
  }
  return withoutTrailingLineFeeds(task->readStandardOutputToEnd());
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/recorder_run.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/bundle.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/drive.h"
#include "platform/recording/recorder_report.h"

namespace kelvane {
namespace {

constexpr char kRecorderName[] = "recorder";
constexpr int kSignalledByShellConvention = 128;

DRBurnStatus statusWith(const char* state, std::optional<double> fraction = std::nullopt) {
  DRBurnStatus status;
  status.DRStatusStateKey = state;
  status.DRStatusPercentCompleteKey = fraction;
  return status;
}

double fractionOf(int64_t done, int64_t total) {
  if (total <= 0) return 0.0;
  return std::clamp(static_cast<double>(done) / static_cast<double>(total), 0.0, 1.0);
}

DRBurnStatus statusFrom(const RecorderReport& report) {
  switch (report.kind) {
    case RecorderReport::Kind::Preparing:
      break;
    case RecorderReport::Kind::Writing:
      return statusWith(DRStatusStateTrackWrite,
                        fractionOf(report.writtenBlocks, report.totalBlocks));
    case RecorderReport::Kind::Erasing:
      return statusWith(DRStatusStateErasing, fractionOf(report.erasedParts, report.totalParts));
    case RecorderReport::Kind::Closing:
      return statusWith(DRStatusStateSessionClose, 1.0);
    case RecorderReport::Kind::Finishing:
      return statusWith(DRStatusStateFinishing, 1.0);
    case RecorderReport::Kind::Done:
      return statusWith(DRStatusStateDone, 1.0);
    case RecorderReport::Kind::Failed:
      return failedStatus(report.error.empty() ? "The recorder gave no reason." : report.error);
  }
  return statusWith(DRStatusStatePreparing, 0.0);
}

std::vector<std::string> writingArguments(const RecorderOrder& order) {
  std::vector<std::string> arguments{"--image", order.imagePath};
  if (order.appendable) arguments.push_back("--appendable");
  if (!order.underrunProtection) arguments.push_back("--no-underrun-protection");
  if (order.speed) {
    arguments.push_back("--speed");
    arguments.push_back(std::to_string(*order.speed));
  }
  return arguments;
}

std::vector<std::string> argumentsFor(const DriveIdentity& drive, const RecorderOrder& order) {
  std::vector<std::string> arguments{"--erase"};
  if (order.task == RecorderOrder::Task::Write) arguments = writingArguments(order);
  arguments.insert(arguments.end(), {"--device", drive.programPath});
  if (!drive.recordingLockPath.empty()) {
    arguments.insert(arguments.end(), {"--lock", drive.recordingLockPath});
  }
  return arguments;
}

std::string lastLine(const std::string& text) {
  const size_t end = text.find_last_not_of('\n');
  if (end == std::string::npos) return {};
  const size_t before = text.rfind('\n', end);
  const size_t begin = before == std::string::npos ? 0 : before + 1;
  return text.substr(begin, end - begin + 1);
}

}  // namespace

RecorderRun::RecorderRun(DRDevice& device, const RecorderOrder& order,
                         std::function<void(const DRBurnStatus&)> handler)
    : device_(device), kind_(order.task), handler_(std::move(handler)) {
  const DriveIdentity& drive = device.drive()->identity();
  const auto program = Bundle::mainBundle().pathForAuxiliaryExecutable(kRecorderName);
  task_.setLaunchPath(
      program.value_or(Bundle::mainBundle().auxiliaryFolder() + "/" + kRecorderName));
  task_.setArguments(argumentsFor(drive, order));
  for (const auto& [name, value] : drive.programEnvironment) {
    task_.setEnvironmentVariable(name, value);
  }
  task_.setSession(ChildTask::Session::OfItsOwn);
  task_.setOutputLineHandler([this](const std::string& line) { receive(line); });
  task_.setEndHandler([this] { finish(); });
}

std::string RecorderRun::start() {
  const DriveClaimHandover handover = device_.handClaimOver(task_);
  if (task_.launch()) return {};
  return "The recorder could not be started: " + task_.launchError();
}

int64_t RecorderRun::processIdentifier() const {
  return task_.processIdentifier();
}

// The result is held back until the recorder has ended and let go of the drive.
void RecorderRun::receive(const std::string& line) {
  const auto report = parseRecorderReport(line);
  if (!report || result_) return;
  const bool isResult =
      report->kind == RecorderReport::Kind::Done || report->kind == RecorderReport::Kind::Failed;
  if (isResult) {
    result_ = statusFrom(*report);
  } else {
    handler_(statusFrom(*report));
  }
}

void RecorderRun::finish() {
  if (!result_) {
    result_ = failedStatus(describeEnd());
  }
  handler_(*result_);
}

std::string RecorderRun::describeEnd() {
  const int status = task_.terminationStatus();
  const bool signalled = status > kSignalledByShellConvention;
  const std::string cause = signalled
                                ? "signal " + std::to_string(status - kSignalledByShellConvention)
                                : "exit status " + std::to_string(status);
  const char* consequence = kind_ == RecorderOrder::Task::Write
                                ? "the disc may hold an unfinished session."
                                : "the disc may be erased in part.";
  std::string text = "The recorder ended without a result (" + cause + "); " + consequence;
  const std::string words = lastLine(task_.readStandardErrorToEnd());
  if (!words.empty()) text += " It said: " + words;
  return text;
}

}  // namespace kelvane

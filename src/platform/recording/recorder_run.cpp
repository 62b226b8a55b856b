// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/recorder_run.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/bundle.h"
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

DRBurnStatus failure(const std::string& why) {
  DRBurnStatus status = statusWith(DRStatusStateFailed);
  status.DRErrorStatusKey = DRErrorStatus{why};
  return status;
}

double fractionWritten(const RecorderReport& report) {
  if (report.totalBlocks <= 0) return 0.0;
  const double fraction =
      static_cast<double>(report.writtenBlocks) / static_cast<double>(report.totalBlocks);
  return std::clamp(fraction, 0.0, 1.0);
}

DRBurnStatus statusFrom(const RecorderReport& report) {
  switch (report.kind) {
    case RecorderReport::Kind::Preparing:
      break;
    case RecorderReport::Kind::Writing:
      return statusWith(DRStatusStateTrackWrite, fractionWritten(report));
    case RecorderReport::Kind::Closing:
      return statusWith(DRStatusStateSessionClose, 1.0);
    case RecorderReport::Kind::Finishing:
      return statusWith(DRStatusStateFinishing, 1.0);
    case RecorderReport::Kind::Done:
      return statusWith(DRStatusStateDone, 1.0);
    case RecorderReport::Kind::Failed:
      return failure(report.error.empty() ? "The recorder gave no reason." : report.error);
  }
  return statusWith(DRStatusStatePreparing, 0.0);
}

std::vector<std::string> argumentsFor(const DriveIdentity& drive, const RecorderOrder& order) {
  std::vector<std::string> arguments{"--device", drive.programPath, "--image", order.imagePath};
  if (order.appendable) arguments.push_back("--appendable");
  if (!order.underrunProtection) arguments.push_back("--no-underrun-protection");
  if (order.speed) {
    arguments.push_back("--speed");
    arguments.push_back(std::to_string(*order.speed));
  }
  if (!drive.recordingLockPath.empty()) {
    arguments.push_back("--lock");
    arguments.push_back(drive.recordingLockPath);
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

std::string describeEnd(int terminationStatus, const std::string& standardError) {
  const bool signalled = terminationStatus > kSignalledByShellConvention;
  std::string text = "The recorder ended without a result (";
  text += signalled ? "signal " + std::to_string(terminationStatus - kSignalledByShellConvention)
                    : "exit status " + std::to_string(terminationStatus);
  text += "); the disc may hold an unfinished session.";
  const std::string words = lastLine(standardError);
  if (!words.empty()) text += " It said: " + words;
  return text;
}

}  // namespace

RecorderRun::RecorderRun(const DriveIdentity& drive, const RecorderOrder& order,
                         std::function<void(const DRBurnStatus&)> handler)
    : handler_(std::move(handler)) {
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
    result_ = failure(describeEnd(task_.terminationStatus(), task_.readStandardErrorToEnd()));
  }
  handler_(*result_);
}

}  // namespace kelvane

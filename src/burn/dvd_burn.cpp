// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/dvd_burn.h"

#include <utility>

#include "burn/growisofs_arguments.h"
#include "burn/growisofs_output.h"
#include "burn/whole_disc_unmount.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/child_task.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/notification_center.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

constexpr char kSessionWriter[] = "growisofs";
constexpr char kImageBuilder[] = "mkisofs";
constexpr int kMostAttempts = 5;

// A program of ours, or where it would be, so that its absence is told with its path.
std::string auxiliaryProgram(const std::string& name) {
  const Bundle& bundle = Bundle::mainBundle();
  return bundle.pathForAuxiliaryExecutable(name).value_or(bundle.auxiliaryFolder() + "/" + name);
}

}  // namespace

DVDBurn::DVDBurn(DVDBurnParameters parameters, VolumeServices& services)
    : parameterDict_(std::move(parameters)),
      progressIndicator_(parameterDict_.progressIndicator),
      currentDevice_(parameterDict_.currentDevice),
      services_(services),
      self_(std::make_shared<DVDBurn*>(this)) {}

DVDBurn::~DVDBurn() {
  if (thread_.joinable()) thread_.join();
}

void DVDBurn::startDVDBurnInOwnThread() {
  thread_ = std::thread([this] { performDVDBurn(); });
}

void DVDBurn::performDVDBurn() {
  takeDiscFromOthers();
  runGrowisofs();
  for (int attempt = 1; attempt < kMostAttempts && hasLostDiscToOthers(); ++attempt) {
    systemLog("growisofs starts once more: %@", burnErrors_.front());
    forgetAttempt();
    takeDiscFromOthers();
    runGrowisofs();
  }
  NotificationCenter::defaultCenter().post(kKelvaneDidFinishDVD, this);
}

// A volume that stays mounted is growisofs's own business.
void DVDBurn::takeDiscFromOthers() {
  requestWholeDiscUnmount(currentDevice_->bsdName(), services_);
  services_.keepOthersFromMounting(*currentDevice_);
}

// Nothing has been sent to the drive then. What else is reported follows from this.
bool DVDBurn::hasLostDiscToOthers() const {
  return !burnErrors_.empty() && tellsOfForeignMount(burnErrors_.front());
}

void DVDBurn::forgetAttempt() {
  burnErrors_.clear();
  remarks_ = {};
  lastIncompleteStatus_.clear();
}

void DVDBurn::runGrowisofs() {
  ChildTask task;
  task.setLaunchPath(auxiliaryProgram(kSessionWriter));
  task.setArguments(growisofsArguments(parameterDict_));
  task.setEnvironmentVariable("MKISOFS", auxiliaryProgram(kImageBuilder));
  // What ends the application's session (a terminal's Ctrl-C, a log-out) must not cost a disc.
  task.setSession(ChildTask::Session::OfItsOwn);
  // An error is only seen where it begins a chunk or ends it as a line. Were several messages read
  // as one chunk, it would depend on this thread's speed whether a failure is noticed.
  task.keepErrorWritesApart();
  {
    const DriveClaimHandover handover = currentDevice_->handClaimOver(task);
    if (!task.launch()) {
      burnErrors_.push_back(task.launchError());
      return;
    }
  }
  for (std::string chunk = task.availableStandardError(); !chunk.empty();
       chunk = task.availableStandardError()) {
    processStatus(chunk);
    remarks_.take(chunk);
  }
  remarks_.end();
  task.waitBlocking(-1);
}

void DVDBurn::processStatus(std::string_view chunk) {
  const GrowisofsChunk reading = readGrowisofsChunk(chunk);
  switch (reading.kind) {
    case GrowisofsChunk::Kind::Error:
      burnErrors_.push_back(*reading.error);
      return;
    case GrowisofsChunk::Kind::Fragment:
      lastIncompleteStatus_ += reading.fragment;
      return;
    case GrowisofsChunk::Kind::Lines:
      break;
  }
  lastIncompleteStatus_ = reading.fragment;
  forgetPercentDone();
  if (reading.percentDone) setPercentDoneString(*reading.percentDone);
  if (reading.error) burnErrors_.push_back(*reading.error);
  performOnMainThread([self = std::weak_ptr(self_)] {
    if (const auto burn = self.lock()) (*burn)->updateProgressIndicator();
  });
}

void DVDBurn::updateProgressIndicator() {
  if (progressIndicator_ == nullptr) return;
  const std::optional<std::string> percent = percentDoneString();
  if (percent) {
    progressIndicator_->setIndeterminate(false);
    progressIndicator_->setDoubleValue(barValueOfPercent(*percent));
  } else {
    progressIndicator_->setIndeterminate(true);
    progressIndicator_->startAnimation();
  }
}

std::optional<std::string> DVDBurn::percentDoneString() const {
  const std::lock_guard guard(percentDoneStringMutex_);
  return percentDoneString_;
}

void DVDBurn::setPercentDoneString(const std::string& percent) {
  const std::lock_guard guard(percentDoneStringMutex_);
  percentDoneString_ = percent;
}

void DVDBurn::forgetPercentDone() {
  const std::lock_guard guard(percentDoneStringMutex_);
  percentDoneString_.reset();
}

}  // namespace kelvane

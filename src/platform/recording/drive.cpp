// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/foundation/system_log.h"
#include "platform/recording/media_identity.h"
#include "platform/recording/mmc/format_capacities.h"
#include "platform/recording/mmc/inquiry.h"
#include "platform/recording/mmc/tray.h"
#include "platform/recording/mmc/unit_ready.h"

namespace kelvane {
namespace {

// Somebody who only looks whether the lock is free holds it for a moment.
constexpr std::chrono::milliseconds kLockPatience{100};

bool meansThatDriveIsGone(int errorNumber) {
  return errorNumber == ENOENT || errorNumber == ENXIO || errorNumber == ENODEV ||
         errorNumber == ENOMEDIUM;
}

/// A drive's transport that notes whether a question could not be put to a drive that may be there
/// (no descriptor is left, the right to the node was taken away, no answer came in time), and
/// whether the drive asked for patience.
class NotingTransport : public mmc::Transport {
 public:
  explicit NotingTransport(mmc::Transport& drive) : drive_(drive) {}

  bool everyQuestionWasPut() const { return everyQuestionWasPut_; }
  /// Whether what could not be put is worth another try.
  bool mayBeAskedAgain() const { return mayBeAskedAgain_; }
  bool driveBecomesReady() const { return driveBecomesReady_; }

  mmc::Answer read(std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
                   std::chrono::milliseconds timeLimit) override {
    return note(drive_.read(commandBlock, data, timeLimit));
  }
  mmc::Answer write(std::span<const uint8_t> commandBlock, std::span<const uint8_t> data,
                    std::chrono::milliseconds timeLimit) override {
    return note(drive_.write(commandBlock, data, timeLimit));
  }

 private:
  mmc::Answer note(const mmc::Answer& answer) {
    if (answer.status == mmc::Status::Unreachable && !meansThatDriveIsGone(answer.errorNumber)) {
      everyQuestionWasPut_ = false;
      const bool isClosed = answer.errorNumber == EACCES || answer.errorNumber == EPERM;
      mayBeAskedAgain_ = mayBeAskedAgain_ || !isClosed;
    }
    if (mmc::readinessFrom(answer) == mmc::Readiness::BecomingReady) driveBecomesReady_ = true;
    return answer;
  }

  mmc::Transport& drive_;
  bool everyQuestionWasPut_ = true;
  bool mayBeAskedAgain_ = false;
  bool driveBecomesReady_ = false;
};

}  // namespace

Drive::Drive(DriveIdentity identity, std::unique_ptr<mmc::Transport> transport)
    : identity_(std::move(identity)), transport_(std::move(transport)) {}

bool Drive::exists() const {
  std::error_code failure;
  return std::filesystem::exists(identity_.presencePath, failure);
}

// The drive's name and abilities do not change, so they are asked for once, while it may be asked.
void Drive::learnNames() const {
  if (leftAlone_) return;
  if (!displayName_) {
    if (const auto inquiry = mmc::readInquiry(*transport_)) {
      const bool both = !inquiry->vendor.empty() && !inquiry->product.empty();
      displayName_ = inquiry->vendor + (both ? " " : "") + inquiry->product;
    }
  }
  if (!writesCD_) {
    if (const auto configuration = mmc::readConfiguration(*transport_)) {
      writesCD_ =
          configuration->supports(mmc::Profile::CdR) || configuration->supports(mmc::Profile::CdRw);
    }
  }
}

std::string Drive::displayName() const {
  const std::lock_guard guard(mutex_);
  learnNames();
  return displayName_.value_or(identity_.bsdName);
}

bool Drive::writesCD() const {
  const std::lock_guard guard(mutex_);
  learnNames();
  return writesCD_.value_or(false);
}

// Who cannot ask knows nothing of the disc, least of all that it has gone: with a disc go the
// changes of its volume. A drive that becomes ready does not know yet what is in it, and it does so
// with the same disc when it spins up again after a read error or a reset. One that was opened has
// said so before.
void Drive::askForState() const {
  NotingTransport transport(*transport_);
  const MediaState state = readMediaState(transport);
  stateWasAnswered_ = !transport.mayBeAskedAgain();
  if (!transport.everyQuestionWasPut()) return;
  if (state != lastState_) forgetStatus();
  if (state.transitioning && lastState_.present) {
    lastState_.transitioning = true;
  } else {
    lastState_ = state;
  }
}

// A session that was not found since a question was not answered would be missing from all that is
// recorded from then on. Who cannot ask goes by what was read of the same disc before; while the
// drive becomes ready, the disc may be another one.
void Drive::askForStatus() const {
  NotingTransport transport(*transport_);
  DRDeviceStatus status = readDeviceStatus(transport);
  statusWasAnswered_ = transport.driveBecomesReady() || !transport.mayBeAskedAgain();
  if (transport.driveBecomesReady()) {
    lastStatus_ = {};
  } else if (transport.everyQuestionWasPut()) {
    lastStatus_ = std::move(status);
  }
}

MediaState Drive::mediaState() const {
  const std::lock_guard guard(mutex_);
  if (!leftAlone_) askForState();
  return lastState_;
}

DRDeviceStatus Drive::status() const {
  const std::lock_guard guard(mutex_);
  if (!leftAlone_) askForStatus();
  return lastStatus_;
}

MediaState Drive::knownMediaState() const {
  const std::lock_guard guard(mutex_);
  return lastState_;
}

bool Drive::isWorthAnotherQuestion() const {
  const std::lock_guard guard(mutex_);
  if (leftAlone_) return false;
  const bool statusIsMissing =
      lastState_.present && !statusWasAnswered_ && !lastStatus_.DRDeviceMediaInfoKey;
  return !stateWasAnswered_ || statusIsMissing;
}

std::optional<uint32_t> Drive::formatCapacity() const {
  const std::lock_guard guard(mutex_);
  if (leftAlone_) return std::nullopt;
  return mmc::readFormatCapacity(*transport_);
}

std::string Drive::mediaIdentity() const {
  const std::lock_guard guard(mutex_);
  if (leftAlone_) return {};
  NotingTransport transport(*transport_);
  const std::string identity = readMediaIdentity(transport);
  const bool isAnswered = transport.everyQuestionWasPut() && !transport.driveBecomesReady();
  return isAnswered ? identity : std::string();
}

bool Drive::acquireExclusiveAccess() {
  const std::lock_guard guard(mutex_);
  if (!exclusiveAccess_ && (claim_ || !transport_->refusesExclusiveAccess())) {
    exclusiveAccess_ = FileLock::acquire(identity_.exclusiveLockPath, kLockPatience);
  }
  return exclusiveAccess_.has_value();
}

void Drive::releaseExclusiveAccess() {
  const std::lock_guard guard(mutex_);
  exclusiveAccess_.reset();
}

bool Drive::keepOthersFromMounting() {
  const std::lock_guard guard(mutex_);
  if (identity_.emulatedDisc || claim_) return true;
  claim_ = DriveClaim::take(identity_.programPath);
  return claim_ != nullptr;
}

void Drive::letOthersMount() {
  const std::lock_guard guard(mutex_);
  claim_.reset();
}

std::unique_ptr<DriveClaim> Drive::giveUpClaim() {
  const std::lock_guard guard(mutex_);
  return std::move(claim_);
}

bool Drive::isRecordedByAnyone() const {
  return !identity_.recordingLockPath.empty() && FileLock::isHeld(identity_.recordingLockPath);
}

bool Drive::openTray() {
  const std::lock_guard guard(mutex_);
  if (leftAlone_) return false;
  // A lock that a program left behind must not keep the disc in; whether it can be lifted shows in
  // the answer to the next command.
  static_cast<void>(mmc::allowMediumRemoval(*transport_));
  const mmc::Answer answer = mmc::openTray(*transport_);
  if (answer.status == mmc::Status::CheckCondition) {
    systemLog("%@ does not open its tray: sense %i/%i/%i", identity_.bsdName,
              static_cast<int>(answer.sense.key), static_cast<int>(answer.sense.code),
              static_cast<int>(answer.sense.qualifier));
  }
  if (!answer.isGood()) return false;
  ++trayOpenings_;
  forgetDisc();
  return true;
}

bool Drive::closeTray() {
  const std::lock_guard guard(mutex_);
  return !leftAlone_ && mmc::closeTray(*transport_).isGood();
}

std::optional<mmc::MediaEventStatus> Drive::mediaEvent() const {
  const std::lock_guard guard(mutex_);
  if (leftAlone_) return std::nullopt;
  const auto event = mmc::readMediaEvent(*transport_);
  if (event && event->trayOpen) forgetDisc();
  return event;
}

// The tray is open: whatever is in the drive next may be another disc.
void Drive::forgetDisc() const {
  lastState_ = {};
  forgetStatus();
}

void Drive::forgetStatus() const {
  lastStatus_ = {};
  statusWasAnswered_ = true;
}

void Drive::leaveAlone() {
  const std::lock_guard guard(mutex_);
  if (leftAlone_) return;
  learnNames();
  askForState();
  askForStatus();
  leftAlone_ = true;
}

void Drive::askAgain() {
  const std::lock_guard guard(mutex_);
  if (leftAlone_) lastStatus_ = {};  // The disc was recorded on.
  leftAlone_ = false;
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/faults/fault_injector.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "virtualdrive/state/disc_json.h"

namespace kelvane::virtualdrive {
namespace {

constexpr Sense kBecomingReady{0x2, 0x04, 0x01};

// What a drive answers that does not know its disc yet: nothing of these needs the medium.
constexpr std::array<std::uint8_t, 9> kAnswersWithoutDisc = {0x03, 0x12, 0x1A, 0x1B, 0x1E,
                                                             0x46, 0x4A, 0x5A, 0xAC};
// Commands that tell what is on the disc.
constexpr std::array<std::uint8_t, 4> kDescriptions = {0x25, 0x43, 0x51, 0x52};
// Commands that begin to change it.
constexpr std::array<std::uint8_t, 6> kChanges = {0x04, 0x2A, 0x53, 0x5D, 0xA1, 0xAA};

template <std::size_t count>
bool isOneOf(const Command& command, const std::array<std::uint8_t, count>& operations) {
  return std::ranges::find(operations, command.block[0]) != operations.end();
}

std::filesystem::path scriptIn(const std::filesystem::path& folder) {
  return folder / "faults";
}

std::filesystem::path progressIn(const std::filesystem::path& folder) {
  return folder / "faults.state";
}

std::optional<std::string> textOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

std::chrono::milliseconds now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now().time_since_epoch());
}

struct Range {
  std::int64_t first = 0;
  std::int64_t count = 0;
};

// The sectors that a command reads or writes; none for any other.
Range sectorsOf(const Command& command) {
  const auto first = static_cast<Lba>(read32(command.block, 2));
  switch (command.block[0]) {
    case 0x28:
    case 0x2A:
      return {first, read16(command.block, 7)};
    case 0xA8:
    case 0xAA:
      return {first, read32(command.block, 6)};
    case 0xBE:
      return {first, read24(command.block, 6)};
    default:
      return {};
  }
}

bool matches(const FaultTrigger& trigger, const Command& command) {
  const auto& operations = trigger.operations;
  if (!operations.empty() && std::ranges::find(operations, command.block[0]) == operations.end()) {
    return false;
  }
  if (!trigger.address) return true;
  const Range range = sectorsOf(command);
  return *trigger.address >= range.first && *trigger.address < range.first + range.count;
}

}  // namespace

FaultInjector::FaultInjector(DiscFolder& folder) : folder_(folder) {
  const auto text = textOf(scriptIn(folder.path()));
  if (!text) return;
  text_ = *text;
  std::string ignored;
  script_ = parseFaultScript(text_, &ignored);
  if (!script_) return;
  stored_ = FaultProgress::load(progressIn(folder.path()), text_, script_->faults.size());
  progress_ = stored_;
}

std::string FaultInjector::problem(const std::filesystem::path& folder) {
  const auto text = textOf(scriptIn(folder));
  std::string error;
  if (!text || parseFaultScript(*text, &error)) return {};
  return "“" + scriptIn(folder).string() + "”, " + error + ".";
}

// Counts the command, and says whether the fault happens now.
bool FaultInjector::counts(const Command& command, FaultTrigger::Moment moment, std::size_t index) {
  const FaultTrigger& trigger = script_->faults[index].trigger;
  if (trigger.moment != moment || !matches(trigger, command)) return false;
  const std::uint64_t count = ++progress_.counts[index];
  return count == trigger.number || (trigger.andLater && count > trigger.number);
}

bool FaultInjector::isBecomingReady(const Command& command) const {
  const auto delay = script_->notReadyAfterLoad;
  if (delay.count() == 0 || progress_.loadedAt.count() == 0) return false;
  if (folder_.drive.trayOpen || isOneOf(command, kAnswersWithoutDisc)) return false;
  return delay == FaultScript::kNeverReady || now() - progress_.loadedAt < delay;
}

void FaultInjector::showAsLoaded(const Command& command) {
  if (!progress_.isStale || !isOneOf(command, kDescriptions)) return;
  std::string ignored;
  const auto before = discFromJson(progress_.asLoaded, progress_.asLoadedFiles, &ignored);
  if (before) folder_.disc = before->disc;
}

CommandResult FaultInjector::pullTheCable() {
  const auto description = folder_.path() / "disc.json";
  auto aside = description;
  aside += ".gone";
  std::rename(description.c_str(), aside.c_str());
  return {kDescriptionDamaged, 0, true};
}

std::optional<CommandResult> FaultInjector::before(Command& command) {
  if (!script_) return std::nullopt;
  std::optional<CommandResult> answer;
  for (std::size_t index = 0; index < script_->faults.size(); ++index) {
    if (!counts(command, FaultTrigger::Moment::Before, index) || answer) continue;
    const Fault& fault = script_->faults[index];
    if (fault.effect == FaultEffect::Refusal) answer = refuse(fault.sense);
    if (fault.effect == FaultEffect::Attention) answer = refuse(kMediumMayHaveChanged);
    if (fault.effect == FaultEffect::Gone) answer = pullTheCable();
  }
  // The attention comes first, as after every change of the medium.
  if (!answer && !folder_.drive.unitAttention && isBecomingReady(command))
    answer = refuse(kBecomingReady);
  if (answer) return answer;
  if (progress_.asLoaded.empty() && isOneOf(command, kChanges)) {
    progress_.asLoaded = discToJson(folder_.disc);
    progress_.asLoadedFiles = folder_.fileLengths().value_or(FileLengths());
  }
  showAsLoaded(command);
  return std::nullopt;
}

void FaultInjector::after(Command& command) {
  if (!script_) return;
  for (std::size_t index = 0; index < script_->faults.size(); ++index) {
    if (!counts(command, FaultTrigger::Moment::After, index)) continue;
    const FaultEffect effect = script_->faults[index].effect;
    if (effect == FaultEffect::Attention) {
      command.changeDrive().unitAttention = true;
      command.changeDrive().mediaEvent = MediaEvent::NewMedia;
    }
    if (effect == FaultEffect::Stale) progress_.isStale = true;
    if (effect == FaultEffect::Gone) pullTheCable();
  }
}

void FaultInjector::noteTray(bool wasOpen) {
  if (!script_ || wasOpen == folder_.drive.trayOpen) return;
  progress_.loadedAt = folder_.drive.trayOpen ? std::chrono::milliseconds(0) : now();
  progress_.asLoaded.clear();
  progress_.isStale = false;
}

bool FaultInjector::store() {
  if (!script_ || progress_ == stored_) return true;
  stored_ = progress_;
  return progress_.store(progressIn(folder_.path()), text_);
}

std::chrono::nanoseconds FaultInjector::timeFor(const Command& command,
                                                const CommandResult& result) const {
  if (!script_ || script_->bytesPerSecond == 0 || sectorsOf(command).count == 0) return {};
  constexpr double kNanoseconds = 1e9;
  const double seconds =
      static_cast<double>(result.transferred) / static_cast<double>(script_->bytesPerSecond);
  return std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * kNanoseconds));
}

}  // namespace kelvane::virtualdrive

// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/erase_run.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "app/kv_controller.h"
#include "app/terminal_words.h"
#include "media/disc_classification.h"
#include "media/quellbrook.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/strings_table.h"
#include "platform/recording/dr_device.h"
#include "ui/erase_follower.h"

namespace kelvane {
namespace {

constexpr int kExitOfSignal = 128;
constexpr size_t kMostNamesShown = 5;
constexpr char kDiscHasChanged[] = "The disc has been changed meanwhile; nothing has been erased.";

// The first names in the top folder of the disc's volume.
std::string contentsOf(const std::string& mountPath) {
  std::string names;
  size_t count = 0;
  std::error_code failure;
  for (const auto& entry : std::filesystem::directory_iterator(mountPath, failure)) {
    if (++count > kMostNamesShown) continue;
    names += (names.empty() ? "" : ", ") + printable(entry.path().filename().string());
  }
  if (count > kMostNamesShown) {
    names += format(" and %i more", static_cast<int>(count - kMostNamesShown));
  }
  return names;
}

const char* stateOf(EraseExit status) {
  switch (status) {
    case EraseExit::Erased:
      return "erased";
    case EraseExit::Declined:
      return "declined";
    case EraseExit::Usage:
    case EraseExit::NotErasable:
      return "not-erasable";
    case EraseExit::Failed:
      break;
  }
  return "erase-failed";
}

std::string whyNothingIsListed() {
  const std::vector<DRDevice*> devices = DRDevice::devices();
  const bool busy = std::any_of(devices.begin(), devices.end(),
                                [](const DRDevice* device) { return device->mediaIsBusy(); });
  return busy ? "The drive is busy: its disc is being written to or erased."
              : "There is no disc in the drive.";
}

// "HOLIDAY (CDRW in KELVANE Emulated Burner), 2 sessions, 57 MB: Letters, Film.mpg"
std::string describe(const DeviceRecord& record) {
  const DRDevice& device = *record.DRDevice;
  std::string text =
      format("%@ (%@ in %@)", printable(record.description.volumename),
             record.description.mediatype.value_or(""), printable(record.description.devicename));
  if (record.consideredBlank.value_or(false) && device.mediaIsBlank()) return text + ", blank";
  if (const auto media = device.status().DRDeviceMediaInfoKey) {
    const auto sessions = static_cast<int>(media->DRDeviceMediaSessionCountKey);
    text += format(sessions == 1 ? ", %i session" : ", %i sessions", sessions);
  }
  const auto mountPath = quellbrook::mountPathForFallbackBsdName(device, std::nullopt);
  if (!mountPath) return text;
  const auto megabytes = static_cast<int>(quellbrook::fsMediaMBUsed(device, *mountPath));
  return text + format(", %i MB: %@", megabytes, contentsOf(*mountPath));
}

}  // namespace

/// The progress panel in words.
class EraseRun::Panel final : public EraseFollower {
 public:
  explicit Panel(EraseRun& run) : run_(run) {}

 private:
  void showBeginning(const std::string& description) override { say("%@", description); }

  void showFraction(std::optional<double> fraction) override {
    // A line every tenth is enough.
    const int tenths = static_cast<int>(fraction.value_or(0) * 10);
    if (tenths <= announcedTenths_) return;
    announcedTenths_ = tenths;
    say("%i% erased.", tenths * 10);
  }

  void showEnd(const std::string& error) override {
    if (error.empty()) {
      say("The disc is blank now.");
      run_.end(EraseExit::Erased);
    } else {
      run_.giveUp(EraseExit::Failed, format("%@: %@", localizedString("EraseError"), error));
    }
  }

  EraseRun& run_;
  int announcedTenths_ = 0;
};

EraseRun::EraseRun(Confirmation confirmation)
    : confirmation_(confirmation), panel_(std::make_unique<Panel>(*this)) {}

EraseRun::~EraseRun() = default;

void EraseRun::start(KVController& controller) {
  controller_ = &controller;
  // The list is looked at once the scan that changed it is through.
  mediaController().setChangeHandler([this] { performOnMainThread([this] { lookAtRecords(); }); });
}

void EraseRun::lookAtRecords() {
  if (stage_ != Stage::Looking && stage_ != Stage::Asking) return;
  const std::vector<DeviceRecord>& records = mediaController().arrangedObjects();
  if (records.empty()) {
    if (listUnreadableDisc()) return;  // Which brings us here again.
    giveUp(EraseExit::NotErasable, whyNothingIsListed());
    return;
  }
  const DeviceRecord& disc = records.front();
  if (stage_ == Stage::Asking) {
    // The question is about the disc that was there when it was put.
    if (disc != asked_) giveUp(EraseExit::NotErasable, kDiscHasChanged);
    return;
  }
  if (disc.unsupportedString == "") return;  // Still loading: the next scan tells.
  if (!disc.RW) {
    giveUp(EraseExit::NotErasable,
           format("The disc cannot be erased, it is not rewritable: %@.", describe(disc)));
    return;
  }
  stage_ = Stage::Asking;
  asked_ = disc;
  mediaController().setSelectionIndex(0);
  controller_->attemptErase();
}

// A disc without a volume is left out of the list. It may be what is to be erased most of all.
bool EraseRun::listUnreadableDisc() {
  for (DRDevice* device : DRDevice::devices()) {
    const std::optional<std::string> mediaType = device->mediaType();
    if (device->mediaIsBusy() || !device->mediaIsPresent() || !isRewritable(mediaType)) continue;
    DeviceRecord record;
    record.DRDevice = device;
    record.RW = true;
    record.description = {"A disc without a readable volume", device->displayName(),
                          shortMediaType(mediaType)};
    mediaController().addObjects({record});
    return true;
  }
  return false;
}

void EraseRun::beginAlertSheet(const Alert& alert, std::function<void(int)> didEnd) {
  if (alert.messageKey == "attempteraseshort") {
    answerAlert_ = std::move(didEnd);
    ask();
    return;
  }
  giveUp(EraseExit::NotErasable, asLine(alert));
}

void EraseRun::ask() {
  const DeviceRecord disc = mediaController().selectedObjects().back();
  say("%@.", describe(disc));
  if (confirmation_ == Confirmation::Given) {
    performOnMainThread([this] { answer(true); });
    return;
  }
  say("%@", localizedString("attempteraselong"));
  std::fprintf(stderr, "Type yes to erase it: ");
  terminal_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(terminal_.get(), &QSocketNotifier::activated, [this] { readAnswer(); });
}

void EraseRun::readAnswer() {
  char character = 0;
  const ssize_t count = read(STDIN_FILENO, &character, 1);
  if (count == 1 && character != '\n') {
    answer_ += character;
    return;
  }
  terminal_->setEnabled(false);
  answer(answer_ == "yes" || answer_ == "y");
}

void EraseRun::answer(bool yes) {
  if (stage_ != Stage::Asking) return;
  if (!yes) {
    answerAlert_(kAlertFirstButtonReturn + 1);
    giveUp(EraseExit::Declined, "Nothing has been erased.");
    return;
  }
  stage_ = Stage::Erasing;
  answerAlert_(kAlertFirstButtonReturn);
}

DREraseProgressPanel& EraseRun::eraseProgressPanel() {
  return *panel_;
}

void EraseRun::interrupt(int signalNumber) {
  if (stage_ == Stage::Ended) return;
  if (stage_ == Stage::Erasing) {
    say("The disc is being erased, which cannot be stopped; its end is waited for.");
    return;
  }
  giveUp(EraseExit::Declined, "Interrupted: nothing has been erased.");
  outcome_.state = "interrupted";
  outcome_.exitStatus = kExitOfSignal + signalNumber;
}

// The disc has gone between the answer and the erase.
void EraseRun::beep() {
  giveUp(EraseExit::NotErasable, kDiscHasChanged);
}

void EraseRun::terminate() {
  end(EraseExit::NotErasable);
}

void EraseRun::giveUp(EraseExit status, const std::string& reason) {
  say("%@", reason);
  if (stage_ != Stage::Ended) outcome_.error = reason;
  end(status);
}

void EraseRun::end(EraseExit status) {
  if (stage_ == Stage::Ended) return;
  stage_ = Stage::Ended;
  outcome_.state = stateOf(status);
  outcome_.exitStatus = static_cast<int>(status);
  // What the controller still has to do on this thread comes first.
  performOnMainThread([] { QCoreApplication::quit(); });
}

}  // namespace kelvane

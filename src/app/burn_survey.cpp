// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/burn_survey.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <utility>

#include "burn/imaging_verdict.h"
#include "burn/plain_reason.h"
#include "burn/recording_room.h"
#include "burn/session_size.h"
#include "burn/unencodable_name.h"
#include "media/quellbrook.h"
#include "overlayfs/hidden_items.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/own_files.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/recording/dr_device.h"
#include "platform/volumes/volume_services.h"

namespace kelvane {
namespace {

using Certainty = BurnSummary::Certainty;

constexpr int64_t kBlockBytes = 2048;
// What a session has besides contents: system area and descriptors, path tables, and the padding
// that mkisofs puts behind it. A folder takes a block in each of its two trees.
constexpr uint64_t kBlocksOfEverySession = 200;
constexpr uint64_t kBlocksOfAFolder = 2;

// Where no session is continued.
constexpr char kNoSession[] = "0";

BurnSummary::Items itemsOf(const ItemCount& count) {
  return {count.files, count.folders};
}

BurnSummary::Changes changesOf(const ChangeCount& count) {
  return {itemsOf(count.added), itemsOf(count.replaced), itemsOf(count.renamed),
          itemsOf(count.deleted)};
}

int64_t freeBytesIn(const std::string& folder) {
  struct statvfs status = {};
  if (statvfs(folder.c_str(), &status) != 0) return INT64_MAX;
  return static_cast<int64_t>(status.f_bavail * status.f_frsize);
}

/// What is asked of mkisofs, and the room that its answer is held against.
struct Measurement {
  std::vector<std::string> arguments;
  RecordingRoom room;
};

std::optional<Measurement> measurementOnCD(const SurveySubject& subject) {
  const std::optional<std::string> session = quellbrook::sessionString(*subject.device);
  if (!session) return std::nullopt;
  SessionImageRequest request;
  request.sessionString = *session;
  request.volumeName = subject.volumeName;
  request.hideListPath = subject.hideList;
  request.deviceName = subject.deviceName;
  request.tmpDirPath = subject.overlay;
  return Measurement{sessionSizeArguments(request), roomOnCD(*subject.device)};
}

// Where growisofs has mkisofs look for the volume, and where the next session begins: on media that
// are written over at will at the beginning, and behind the volume.
std::string sessionStringOfDVD(const SurveySubject& subject, int64_t usedBlocks) {
  const std::optional<std::string> session = quellbrook::sessionString(*subject.device);
  if (session && session->find(',') != std::string::npos) return *session;
  return format("16,%@", std::to_string(nextSessionOnDVD(usedBlocks)));
}

Measurement measurementOnDVD(const SurveySubject& subject) {
  DVDBurnParameters parameters;
  parameters.dvdvolumename = subject.volumeName;
  parameters.hideFilePath = subject.hideList;
  parameters.sourcepath = subject.overlay;
  parameters.burntoemptydisk = subject.disc ? "NO" : "YES";
  int64_t usedBlocks = 0;
  std::optional<DvdContinuation> continued;
  if (subject.disc) {
    if (const auto volume = subject.volumes->mountTableEntryOf(*subject.disc)) {
      usedBlocks = static_cast<int64_t>(volume->totalBlocks) *
                   static_cast<int64_t>(volume->blockSize) / kBlockBytes;
    }
    continued = {subject.deviceName, sessionStringOfDVD(subject, usedBlocks)};
  }
  return {sessionSizeArguments(parameters, continued), roomOnDVD(*subject.device, usedBlocks)};
}

}  // namespace

BurnSurvey::BurnSurvey(SurveySubject subject, Report report)
    : subject_(std::move(subject)),
      report_(std::make_shared<Report>(std::move(report))),
      wanted_(report_),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

// What is queued already finds nobody to report to; then the thread is asked to end, and waited
// for.
BurnSurvey::~BurnSurvey() {
  report_.reset();
}

void BurnSurvey::run(const std::stop_token& stop) {
  if (!countItems(stop) || !findHiddenItems(stop)) return;
  measure(stop);
  if (stop.stop_requested()) return;
  summary_.isComplete = true;
  say();
}

// False where it is to end. What the changes need is a guess until mkisofs has computed it.
bool BurnSurvey::countItems(const std::stop_token& stop) {
  const auto count =
      countChanges(subject_.overlay, subject_.disc, subject_.changes, subject_.appleDouble, stop);
  if (!count) return false;
  summary_.changes = changesOf(*count);
  const uint64_t blocks =
      count->contentBlocks + count->folders * kBlocksOfAFolder + kBlocksOfEverySession;
  const int64_t needed = static_cast<int64_t>(blocks) * kBlockBytes;
  summary_.needed = {needed, Certainty::Estimated};
  summary_.freeBefore = {subject_.nominallyFree, Certainty::Estimated};
  summary_.freeAfterwards = {subject_.nominallyFree - needed, Certainty::Estimated};
  say();
  return true;
}

bool BurnSurvey::findHiddenItems(const std::stop_token& stop) {
  // Such a session is built without the list.
  const bool isFirstOnCD = subject_.road == SurveySubject::Road::CD &&
                           quellbrook::sessionString(*subject_.device) == kNoSession;
  if (!subject_.disc || isFirstOnCD) return true;
  const auto effects = effectsOfHiding(subject_.overlay, subject_.hideList, subject_.changes, stop);
  if (!effects) return false;
  for (const HiddenItem& item : effects->hiddenToo) {
    summary_.hiddenToo.push_back(item.path.substr(1) + (item.isFolder ? "/" : ""));
  }
  for (const std::string& path : effects->shownStill) summary_.shownStill.push_back(path.substr(1));
  if (summary_.warns()) say();
  return true;
}

void BurnSurvey::measure(const std::stop_token& stop) {
  // What the burn itself would refuse to read is not read here either.
  if (directoryState(subject_.overlay) != PathState::Own ||
      plainFileState(subject_.hideList) != PathState::Own) {
    return;
  }
  std::optional<Measurement> measurement = subject_.road == SurveySubject::Road::CD
                                               ? measurementOnCD(subject_)
                                               : measurementOnDVD(subject_);
  if (stop.stop_requested()) return;
  if (!measurement) {
    summary_.problem = localizedString("ReasonNoNextSession");
    summary_.problemLiesInTheDisc = true;
    blameDisc({});
    return;
  }
  if (subject_.appleDouble == AppleDouble::LeftOut) leaveOutAppleDouble(measurement->arguments);
  const SessionSize size = measureSession(measurement->arguments, stop);
  if (stop.stop_requested()) return;
  if (!size.blocks || judgeImaging(size.said) == ImagingVerdict::Failed) {
    summary_.problem = withPlainReason(size.said, subject_.overlay);
    summary_.problemLiesInTheDisc = reasonLiesInTheDisc(size.said);
  } else if (const auto name = unencodableName(subject_.overlay, subject_.changes.deleted, stop)) {
    summary_.problem = format(localizedString("ReasonNameNotText"), name->substr(1));
  }
  if (size.blocks) take(static_cast<int64_t>(*size.blocks), measurement->room);
  blameDisc(measurement->room);
}

// What lies in the disc counts more than what lies in the changes: no others could be burned
// either.
void BurnSurvey::blameDisc(const RecordingRoom& room) {
  const bool isClosed = subject_.road == SurveySubject::Road::CD && subject_.disc &&
                        !subject_.device->mediaIsAppendable();
  if (!isClosed && room.blocksToLastBeginning >= 0) return;
  summary_.problem = localizedString(isClosed ? "ReasonDiscClosed" : "ReasonSessionLimit");
  summary_.problemLiesInTheDisc = true;
}

void BurnSurvey::take(int64_t blocks, const RecordingRoom& room) {
  summary_.needed = {room.blocksFor(blocks) * kBlockBytes, Certainty::Exact};
  const int64_t needed = summary_.needed->bytes;
  if (const std::optional<int64_t> left = room.leftAfter(blocks)) {
    summary_.freeBefore = {*room.freeBlocks * kBlockBytes, Certainty::Exact};
    summary_.freeAfterwards = {*left * kBlockBytes, Certainty::Exact};
  } else {
    summary_.freeAfterwards = {subject_.nominallyFree - needed, Certainty::Estimated};
  }
  // The image of a CD's session stands in the folder for temporary files before it is burned.
  if (subject_.road == SurveySubject::Road::CD && summary_.problem.empty() &&
      freeBytesIn(paths::temporaryDirectory()) < blocks * kBlockBytes) {
    summary_.problem = localizedString("ReasonTemporaryFolderFull");
  }
}

void BurnSurvey::say() const {
  performOnMainThread([report = wanted_, summary = summary_] {
    if (const auto stillWanted = report.lock()) (*stillWanted)(summary);
  });
}

}  // namespace kelvane

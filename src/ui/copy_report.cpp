// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/copy_report.h"

#include <cstring>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "ui/alert_sheet.h"
#include "ui/amount_texts.h"

namespace kelvane {
namespace {

constexpr size_t kMostFailures = 5;

std::string nameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string reasonOf(const CopyFailure& failure) {
  switch (failure.problem) {
    case CopyProblem::NotReadable:
      return localizedString("CopyNotReadable");
    case CopyProblem::NoRoom:
      return localizedString("CopyNoRoomLeft");
    case CopyProblem::TooLarge:
      return localizedString("CopyTooLarge");
    case CopyProblem::NotAFile:
      return localizedString("CopyNotAFile");
    case CopyProblem::HoldsTheVolume:
      return localizedString("CopyHoldsTheVolume");
    case CopyProblem::AlreadyThere:
      return localizedString("CopyAlreadyThere");
    case CopyProblem::NotAbsolute:
    case CopyProblem::Failed:
      break;
  }
  return failure.errorNumber == 0 ? localizedString("CopyNotReadable")
                                  : std::strerror(failure.errorNumber);
}

Alert alertOf(const char* key, std::string detail) {
  return {.style = Alert::Style::Warning,
          .buttonKeys = {"OK"},
          .messageKey = key,
          .informativeKey = std::string(key) + "Long",
          .detail = std::move(detail)};
}

std::string failureLines(const std::vector<CopyFailure>& failures) {
  std::string lines;
  for (const CopyFailure& failure : failures) {
    // The alert names a few of them, the log all.
    systemLog("%@ could not be copied: %@", failure.path, reasonOf(failure));
  }
  for (size_t index = 0; index < failures.size() && index < kMostFailures; ++index) {
    lines += "\n" + format(localizedString("CopyFailure"), nameOf(failures[index].path),
                           reasonOf(failures[index]));
  }
  if (failures.size() > kMostFailures) {
    lines += "\n" + format(localizedString("CopyMoreFailures"), failures.size() - kMostFailures);
  }
  return lines;
}

}  // namespace

void reportCopy(QWidget* parent, const CopyOutcome& outcome) {
  if (outcome.cancelled) return;
  if (outcome.missingRoom) {
    const auto needed = bytesText(static_cast<int64_t>(outcome.missingRoom->needed));
    const auto free = bytesText(static_cast<int64_t>(outcome.missingRoom->free));
    openAlertSheet(parent,
                   alertOf("CopyNoRoom", format(localizedString("CopyRoom"), needed.toStdString(),
                                                free.toStdString())),
                   {});
  } else if (!outcome.failures.empty()) {
    openAlertSheet(parent, alertOf("CopyFailures", failureLines(outcome.failures)), {});
  }
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/summary_warnings.h"

#include <QStringList>
#include <string>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/amount_texts.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

using About = SummaryWarning::About;

std::string textOf(int64_t bytes) {
  return bytesText(bytes).toStdString();
}

/// The texts of a key and of the same key with "Long" appended, which takes the values.
template <typename... Values>
SummaryWarning makeWarning(About about, const std::string& key, const Values&... values) {
  return {about, localizedText(key),
          QString::fromStdString(format(localizedString(key + "Long"), values...))};
}

std::string listOf(const std::vector<std::string>& paths) {
  QStringList names;
  for (const std::string& path : paths) names << QString::fromStdString(path);
  return namesText(names).toStdString();
}

}  // namespace

std::vector<SummaryWarning> warningsOf(const BurnSummary& summary) {
  std::vector<SummaryWarning> warnings;
  if (!summary.problem.empty()) {
    const char* key = summary.problemLiesInTheDisc ? "SummaryDiscProblem" : "SummaryProblem";
    warnings.push_back(makeWarning(About::Problem, key, summary.problem));
  }
  if (summary.isTooLarge() && summary.needed && summary.freeBefore) {
    warnings.push_back(makeWarning(About::Size, "SummaryTooLarge", textOf(summary.needed->bytes),
                                   textOf(summary.freeBefore->bytes),
                                   textOf(summary.freeAfterwards->bytes)));
  }
  if (!summary.hiddenToo.empty()) {
    warnings.push_back(makeWarning(About::Hidden, "SummaryHidden", listOf(summary.hiddenToo)));
  }
  if (!summary.shownStill.empty()) {
    warnings.push_back(
        makeWarning(About::ShownStill, "SummaryShownStill", listOf(summary.shownStill)));
  }
  return warnings;
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/summary_words.h"

#include <utility>

#include "app/terminal_words.h"
#include "platform/foundation/strings_table.h"
#include "ui/amount_texts.h"
#include "ui/summary_warnings.h"

namespace kelvane {
namespace {

std::string amountOf(const BurnSummary::Bytes& bytes) {
  std::string text = bytesText(bytes.bytes).toStdString();
  if (bytes.certainty == BurnSummary::Certainty::Exact) return text;
  return format(localizedString("SummaryAbout"), text);
}

}  // namespace

std::vector<std::string> linesOf(const BurnSummary& summary) {
  std::vector<std::string> lines;
  const auto add = [&lines](const char* key, const std::string& value) {
    lines.push_back(printable(localizedString(key) + " " + value));
  };
  const BurnSummary::Changes changes = summary.changes.value_or(BurnSummary::Changes());
  for (const auto& [key, items] :
       {std::pair{"SummaryAdded", changes.added}, std::pair{"SummaryReplaced", changes.replaced},
        std::pair{"SummaryRenamed", changes.renamed},
        std::pair{"SummaryDeleted", changes.deleted}}) {
    if (items.files + items.folders == 0) continue;
    add(key, itemsText(items.files, items.folders).toStdString());
  }
  if (summary.needed) add("SummaryNeeded", amountOf(*summary.needed));
  if (summary.freeAfterwards && summary.freeAfterwards->bytes >= 0) {
    add("SummaryLeft", amountOf(*summary.freeAfterwards));
  }
  for (const SummaryWarning& warning : warningsOf(summary)) {
    lines.push_back(
        printable(warning.message.toStdString() + ". " + warning.explanation.toStdString()));
  }
  return lines;
}

}  // namespace kelvane

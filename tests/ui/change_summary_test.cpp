// SPDX-License-Identifier: GPL-2.0-or-later
// What the burn confirmation sheet tells of the burn, and what it warns of.
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "platform/foundation/strings_table.h"
#include "ui/amount_texts.h"
#include "ui/burn_summary.h"
#include "ui/warning_box.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using namespace kelvane::testing;

constexpr int64_t kMegabyte = 1 << 20;
constexpr auto kEstimated = BurnSummary::Certainty::Estimated;
constexpr auto kExact = BurnSummary::Certainty::Exact;

/// Notes also that changes are to be kept.
class KeepingActions : public RecordedActions {
 public:
  using RecordedActions::RecordedActions;
  void burnConfirmationDidKeep() override { calls.emplace_back("burnConfirmationDidKeep"); }
};

class ChangeSummary : public WindowTest {
 protected:
  ChangeSummary() {
    window_.setActions(&keeping_);
    window_.setBurnConfirmationDiskTitle("Holiday");
    window_.beginBurnConfirmationSheet();
  }
  ~ChangeSummary() override {
    window_.endBurnConfirmationSheet();
    window_.setActions(nullptr);
  }

  static BurnSummary counted() {
    BurnSummary summary;
    summary.changes = BurnSummary::Changes{{12, 3}, {1, 0}, {0, 1}, {1234, 0}};
    summary.needed = {45 * kMegabyte, kEstimated};
    summary.freeBefore = {500 * kMegabyte, kEstimated};
    summary.freeAfterwards = {455 * kMegabyte, kEstimated};
    return summary;
  }
  static BurnSummary tooLarge() {
    BurnSummary summary = counted();
    summary.needed = {45 * kMegabyte, kExact};
    summary.freeBefore = {30 * kMegabyte, kExact};
    summary.freeAfterwards = {-15 * kMegabyte, kExact};
    return summary;
  }

  /// The text of a line of the summary; empty where it is not shown.
  std::string line(const char* name) {
    auto* label = child<QLabel>(name);
    return label->isVisible() ? label->text().toStdString() : std::string();
  }
  /// Both texts of a warning; empty where it is not shown.
  std::string warning(const char* name) {
    auto* box = child<QWidget>(name);
    if (!box->isVisible()) return {};
    return (box->accessibleName() + " " + box->accessibleDescription()).toStdString();
  }
  QPushButton* button(const char* name) { return child<QPushButton>(name); }

  KeepingActions keeping_{window_.mediaController()};
};

TEST_F(ChangeSummary, SaysThatItIsLookingUntilItKnowsSomething) {
  EXPECT_NE(line("summaryLooking"), "");
  EXPECT_EQ(line("summaryAdded"), "");
  EXPECT_EQ(line("summaryNeeded"), "");
  EXPECT_FALSE(button("burnKeepButton")->isVisible());
  window_.setBurnSummary(counted());
  EXPECT_EQ(line("summaryLooking"), "");
}

TEST_F(ChangeSummary, TellsWhatIsAddedReplacedMovedAndDeleted) {
  window_.setBurnSummary(counted());
  EXPECT_EQ(line("summaryAdded"), "12 files, 3 folders");
  EXPECT_EQ(line("summaryReplaced"), "1 file");
  EXPECT_EQ(line("summaryRenamed"), "1 folder");
  EXPECT_EQ(line("summaryDeleted"), "1,234 files");
}

TEST_F(ChangeSummary, LeavesOutWhatThereIsNoneOf) {
  BurnSummary summary = counted();
  summary.changes = BurnSummary::Changes{};
  summary.changes->deleted = {1, 0};
  window_.setBurnSummary(summary);
  EXPECT_EQ(line("summaryAdded"), "");
  EXPECT_EQ(line("summaryReplaced"), "");
  EXPECT_EQ(line("summaryRenamed"), "");
  EXPECT_EQ(line("summaryDeleted"), "1 file");
}

TEST_F(ChangeSummary, TellsAGuessUntilTheSizeIsKnown) {
  window_.setBurnSummary(counted());
  EXPECT_EQ(line("summaryNeeded"), "about 45\u00A0MB");
  EXPECT_EQ(line("summaryLeft"), "about 455\u00A0MB");
  BurnSummary summary = counted();
  summary.needed = {46 * kMegabyte, kExact};
  summary.freeAfterwards = {400 * kMegabyte, kExact};
  window_.setBurnSummary(summary);
  EXPECT_EQ(line("summaryNeeded"), "46\u00A0MB");
  EXPECT_EQ(line("summaryLeft"), "400\u00A0MB");
  EXPECT_FALSE(button("burnKeepButton")->isVisible());
  EXPECT_TRUE(button("burnConfirmButton")->isDefault());
}

TEST_F(ChangeSummary, SpeaksEachLineWithWhatItIsAbout) {
  window_.setBurnSummary(counted());
  EXPECT_EQ(child<QLabel>("summaryAdded")->accessibleName(), "Added: 12 files, 3 folders");
}

TEST_F(ChangeSummary, WarnsOfASessionThatIsTooLargeAndReturnKeepsTheChangesThen) {
  window_.setBurnSummary(tooLarge());
  EXPECT_THAT(warning("tooLargeWarning"), HasSubstr("do not fit"));
  EXPECT_THAT(warning("tooLargeWarning"),
              HasSubstr("They need 45\u00A0MB, and 30\u00A0MB are free"));
  EXPECT_THAT(warning("tooLargeWarning"), HasSubstr("15\u00A0MB too much"));
  EXPECT_EQ(line("summaryLeft"), "");
  EXPECT_TRUE(button("burnConfirmButton")->isEnabled()) << "the choice is the user's";
  QTest::keyClick(child<QLineEdit>("burnConfirmationPanelDiskTitle"), Qt::Key_Return);
  EXPECT_THAT(keeping_.calls, ElementsAre("burnConfirmationDidKeep"));
}

TEST_F(ChangeSummary, DoesNotWarnOfAGuess) {
  BurnSummary summary = tooLarge();
  summary.freeAfterwards->certainty = kEstimated;
  window_.setBurnSummary(summary);
  EXPECT_EQ(warning("tooLargeWarning"), "");
  EXPECT_TRUE(button("burnConfirmButton")->isDefault());
}

TEST_F(ChangeSummary, WarnsOfASessionThatCannotBePreparedWithTheReason) {
  BurnSummary summary = counted();
  summary.problem = "“a” has 4 GB or more.";
  window_.setBurnSummary(summary);
  EXPECT_THAT(warning("problemWarning"), HasSubstr("“a” has 4 GB or more."));
  EXPECT_FALSE(button("burnConfirmButton")->isDefault());
  click(button("burnKeepButton"));
  EXPECT_THAT(keeping_.calls, ElementsAre("burnConfirmationDidKeep"));
}

TEST_F(ChangeSummary, SaysWhereNothingCanBeAddedToTheDiscThatAnotherIsNeeded) {
  BurnSummary summary = counted();
  summary.problem = localizedString("ReasonSessionLimit");
  summary.problemLiesInTheDisc = true;
  window_.setBurnSummary(summary);
  EXPECT_THAT(warning("problemWarning"), HasSubstr("beyond 4 GB"));
  EXPECT_THAT(warning("problemWarning"), HasSubstr("put them on another disc"));
  EXPECT_FALSE(button("burnConfirmButton")->isDefault());
  EXPECT_TRUE(button("burnKeepButton")->isDefault());
}

TEST_F(ChangeSummary, NamesItemsThatWouldBeMissingAndLeavesBurningTheDefault) {
  BurnSummary summary = counted();
  summary.hiddenToo = {"a", "b/", "c", "d", "e", "f"};
  window_.setBurnSummary(summary);
  EXPECT_THAT(warning("hiddenTooWarning"), HasSubstr("“a”, “b/”, “c”, “d” and 2 more"));
  EXPECT_TRUE(button("burnKeepButton")->isVisible());
  EXPECT_TRUE(button("burnConfirmButton")->isDefault());
}

TEST_F(ChangeSummary, AnnouncesAWarningOnce) {
  QSignalSpy appeared(child<WarningBox>("tooLargeWarning"), &WarningBox::appeared);
  window_.setBurnSummary(counted());
  EXPECT_EQ(appeared.count(), 0);
  window_.setBurnSummary(tooLarge());
  window_.setBurnSummary(tooLarge());
  EXPECT_EQ(appeared.count(), 1);
}

/// The paragraphs of which not all is to be seen.
std::vector<std::string> cutParagraphs(const QWidget& sheet) {
  std::vector<std::string> cut;
  for (const QLabel* label : sheet.findChildren<QLabel*>()) {
    if (!label->wordWrap() || !label->isVisible()) continue;
    const QRect needed = label->fontMetrics().boundingRect(QRect(0, 0, label->width(), 10000),
                                                           Qt::TextWordWrap, label->text());
    const QRect seen = label->visibleRegion().boundingRect();
    if (seen.height() < needed.height()) cut.push_back(label->text().toStdString());
  }
  return cut;
}

TEST_F(ChangeSummary, GrowsWithItsWarningsSoThatNoneIsCut) {
  BurnSummary summary = tooLarge();
  for (int names = 1; names < 60; ++names) {
    summary.problem += " word";
    summary.hiddenToo = {std::string(static_cast<size_t>(names), 'n'), "b", "c", "d", "e"};
    window_.setBurnSummary(summary);
    QCoreApplication::processEvents();
    EXPECT_THAT(cutParagraphs(*openSheet("burnConfirmationPanel")), ::testing::IsEmpty()) << names;
  }
}

class GermanChangeSummary : public ChangeSummary {
 protected:
  GermanChangeSummary() {
    window_.endBurnConfirmationSheet();
    loadStringsTable("de");
    german_.emplace();
    german_->setBurnConfirmationDiskTitle("Urlaub");
    german_->makeKeyAndOrderFront();
    german_->beginBurnConfirmationSheet();
  }
  ~GermanChangeSummary() override {
    german_.reset();
    loadStringsTable("en");
  }

  std::optional<MainWindow> german_;  // Its texts are those of the moment when it is made.
};

TEST_F(GermanChangeSummary, IsNotCutThoughItsButtonsMakeTheSheetWider) {
  BurnSummary summary = counted();
  german_->setBurnSummary(summary);
  summary.hiddenToo = {"Fotos/Mxller.jpg", "Mueller/", "draft.txt", "a", "b", "c"};
  german_->setBurnSummary(summary);
  QCoreApplication::processEvents();
  const auto* sheet = german_->findChild<QDialog*>(QStringLiteral("burnConfirmationPanel"));
  EXPECT_THAT(cutParagraphs(*sheet), ::testing::IsEmpty());
}

TEST_F(ChangeSummary, IsForgottenWhenTheSheetIsOpenedAnew) {
  window_.setBurnSummary(tooLarge());
  window_.endBurnConfirmationSheet();
  window_.beginBurnConfirmationSheet();
  EXPECT_NE(line("summaryLooking"), "");
  EXPECT_EQ(warning("tooLargeWarning"), "");
  EXPECT_TRUE(button("burnConfirmButton")->isDefault());
}

TEST(AmountTexts, AreInTheWordsOfAPerson) {
  EXPECT_EQ(bytesText(0), "0\u00A0MB");
  EXPECT_EQ(bytesText(1), "1\u00A0KB");
  EXPECT_EQ(bytesText(12 * 1024), "12\u00A0KB");
  EXPECT_EQ(bytesText(kMegabyte / 10 + 1), "0.1\u00A0MB");
  EXPECT_EQ(bytesText(kMegabyte * 7 / 2), "3.5\u00A0MB");
  EXPECT_EQ(bytesText(-kMegabyte * 4300), "4,300\u00A0MB");
  EXPECT_EQ(filesText(1), "1 file");
  EXPECT_EQ(itemsText(0, 0), "0 files");
  EXPECT_EQ(itemsText(0, 2), "2 folders");
  EXPECT_EQ(namesText({"a"}), "“a”");
  EXPECT_EQ(namesText({QString(70, 'x')}).size(), 63);
}

TEST(AmountTexts, AreGermanInGerman) {
  loadStringsTable("de");
  EXPECT_EQ(bytesText(kMegabyte * 7 / 2), "3,5\u00A0MB");
  EXPECT_EQ(itemsText(1234, 1), "1.234 Dateien, 1 Ordner");
  loadStringsTable("en");
}

}  // namespace
}  // namespace kelvane

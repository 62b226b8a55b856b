// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/window_states.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QTimer>
#include <QTranslator>
#include <optional>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/agreement_window.h"
#include "ui/burn_summary.h"
#include "ui/erase_progress_sheet.h"
#include "ui/every_alert.h"
#include "ui/license_reader.h"
#include "ui/media_controller.h"
#include "ui/motion.h"
#include "ui/preferences_panel.h"
#include "ui/sample_copy.h"
#include "ui/sample_records.h"

namespace kelvane::testing {
namespace {

constexpr Rect kIn{0, 33, 402, 86};
constexpr Rect kLeft{-402, 33, 402, 86};
constexpr Rect kRight{402, 33, 402, 86};

constexpr const char* kLicense = "<h1>Licence</h1><p>Words that are agreed to.</p>";
constexpr double kHalfBurned = 1.37;
constexpr double kHalfErased = 0.42;

QWidget* visibleChild(MainWindow& window, const char* name) {
  for (QWidget* sheet : window.findChildren<QWidget*>(QLatin1String(name))) {
    if (sheet->isVisible()) return sheet;
  }
  return nullptr;
}

QWidget* empty(MainWindow& window) {
  window.setHidden(HideableView::OpenButton, true);
  window.setHidden(HideableView::DiskScroll, true);
  window.setHidden(HideableView::Message, false);
  window.setMessage(localizedString("insertdisk"));
  return &window;
}

QWidget* emptyWithDiscToInsert(MainWindow& window) {
  window.setInsertableDiscs({"Holiday"}, [](size_t) {});
  return empty(window);
}

QWidget* loading(MainWindow& window) {
  window.setHidden(HideableView::Message, true);
  window.mediaController().addObjects({loadingRecord(localizedString("loadingdisk"))});
  return &window;
}

QWidget* list(MainWindow& window) {
  window.setHidden(HideableView::Message, true);
  window.mediaController().addObjects(
      {refusedRecord("Archive 2009", localizedString("unsupporteddiskformat")),
       usableRecord("Holiday"),
       refusedRecord("A volume name as long as 32 char", localizedString("diskfull"))});
  window.mediaController().setSelectionIndex(1);
  return &window;
}

QWidget* listWithDiscToInsert(MainWindow& window) {
  window.setInsertableDiscs({"Holiday"}, [](size_t) {});
  return list(window);
}

QWidget* opened(MainWindow& window) {
  list(window);
  window.setFrame(ContentView::DiskScroll, kLeft, Movement::Direct);
  window.setFrame(ContentView::Message, kLeft, Movement::Direct);
  window.setFrame(ContentView::MountedItem, kIn, Movement::Direct);
  window.setHeaderLine(localizedString("headerDisksRemounted"));
  window.setOpenButtonCaption(localizedString("buttonclose"));
  window.setVolumeNameField("Holiday");
  window.setDeviceNameField("CDRW in KELVANE Emulated Burner");
  window.setSizeInformationField(format(localizedString("viewSizeOfDisk"), 412));
  return &window;
}

QWidget* confirming(MainWindow& window) {
  opened(window);
  window.setBurnConfirmationDiskTitle("Holiday");
  window.beginBurnConfirmationSheet();
  return visibleChild(window, "burnConfirmationPanel");
}

/// With everything in it that can be told of a burn at once.
QWidget* confirmingWithWarnings(MainWindow& window) {
  QWidget* sheet = confirming(window);
  constexpr int64_t kMegabyte = 1 << 20;
  constexpr auto kExact = BurnSummary::Certainty::Exact;
  BurnSummary summary;
  summary.changes = BurnSummary::Changes{{128, 6}, {3, 1}, {12, 1}, {45, 2}};
  summary.needed = {184 * kMegabyte, kExact};
  summary.freeBefore = {150 * kMegabyte, kExact};
  summary.freeAfterwards = {-34 * kMegabyte, kExact};
  summary.hiddenToo = {"Photos/Mxller.jpg", "Mueller/", "draft.txt", "a", "b", "c"};
  summary.shownStill = {"Photos\\old.jpg"};
  summary.problem = format(localizedString("ReasonFileTooLarge"), "Film.mkv");
  window.setBurnSummary(summary);
  return sheet;
}

/// On a disc to which nothing can be added.
QWidget* confirmingInVain(MainWindow& window) {
  QWidget* sheet = confirming(window);
  BurnSummary summary;
  summary.changes = BurnSummary::Changes{{1, 0}, {}, {}, {}};
  summary.problem = localizedString("ReasonDiscClosed");
  summary.problemLiesInTheDisc = true;
  summary.isComplete = true;
  window.setBurnSummary(summary);
  return sheet;
}

QWidget* discarding(MainWindow& window) {
  static_cast<QDialog*>(confirming(window))->reject();
  return visibleChild(window, "alertSheet");
}

QWidget* burn(MainWindow& window, const char* message) {
  opened(window);
  window.setHeaderLine(localizedString("burningdisk"));
  window.setBurnMessage(localizedString(message));
  window.setFrame(ContentView::MountedItem, kLeft, Movement::Direct);
  window.setFrame(ContentView::Burn, kIn, Movement::Direct);
  return &window;
}

QWidget* burnBegins(MainWindow& window) {
  burn(window, "burnpreparing");
  window.burnProgressIndicator().setIndeterminate(true);
  window.burnProgressIndicator().startAnimation();
  return &window;
}

QWidget* burning(MainWindow& window) {
  burn(window, "burningchangescd");
  window.burnProgressIndicator().setIndeterminate(false);
  window.burnProgressIndicator().setDoubleValue(kHalfBurned);
  return &window;
}

/// Text that passing time would show.
void setRemainingTime(MainWindow& window, const char* field) {
  window.findChild<QLabel*>(QLatin1String(field))
      ->setText(QString::fromStdString(format(localizedString("MinutesLeft"), 120)));
}

QWidget* erasing(MainWindow& window) {
  list(window);
  auto* sheet = window.findChild<EraseProgressSheet*>();
  sheet->showBeginning(localizedString("erasingdisk"));
  sheet->showFraction(kHalfErased);
  setRemainingTime(window, "eraseRemainingField");
  return sheet;
}

/// The copy that a window shows; there is one at a time.
std::optional<SampleCopy>& shownCopy() {
  static std::optional<SampleCopy> copy;
  return copy;
}

QWidget* copyQuestion(MainWindow& window) {
  opened(window);
  return shownCopy().emplace().begin(window);
}

QWidget* copying(MainWindow& window) {
  copyQuestion(window)->hide();
  QWidget* sheet = visibleChild(window, "copyPanel");
  // Or it would tell the time that it knows.
  sheet->findChild<QTimer*>()->stop();
  setRemainingTime(window, "copyRemainingField");
  return sheet;
}

QWidget* preferences(MainWindow& window) {
  auto* panel = window.findChild<PreferencesPanel*>();
  panel->present();
  return panel;
}

QWidget* license(MainWindow& window) {
  auto* reader = window.findChild<LicenseReader*>();
  reader->present(kLicense);
  return reader;
}

QWidget* agreement(MainWindow& window) {
  auto* agreement = new AgreementWindow(&window);
  agreement->setLicenseText(kLicense);
  agreement->show();
  return agreement;
}

std::vector<WindowState> allStates() {
  std::vector<WindowState> states{{"empty", empty},
                                  {"emptyWithDiscToInsert", emptyWithDiscToInsert},
                                  {"loading", loading},
                                  {"list", list},
                                  {"listWithDiscToInsert", listWithDiscToInsert},
                                  {"opened", opened},
                                  {"confirming", confirming},
                                  {"confirmingWithWarnings", confirmingWithWarnings},
                                  {"confirmingInVain", confirmingInVain},
                                  {"discarding", discarding},
                                  {"burnBegins", burnBegins},
                                  {"burning", burning},
                                  {"erasing", erasing},
                                  {"copying", copying},
                                  {"copyQuestion", copyQuestion},
                                  {"preferences", preferences},
                                  {"license", license},
                                  {"agreement", agreement}};
  for (const Alert& alert : everyAlert()) {
    states.push_back({alert.messageKey + "_" + alert.informativeKey, [alert](MainWindow& window) {
                        window.beginAlertSheet(alert, {});
                        return visibleChild(window, "alertSheet");
                      }});
  }
  return states;
}

void removeTranslations() {
  for (QTranslator* table : qApp->findChildren<QTranslator*>()) delete table;
}

}  // namespace

const std::vector<WindowState>& windowStates() {
  static const std::vector<WindowState> states = allStates();
  return states;
}

void leaveState(MainWindow& window) {
  for (QDialog* sheet : window.findChildren<QDialog*>()) {
    // These are made anew each time.
    const QString name = sheet->objectName();
    if (name == QLatin1String("alertSheet") || name == QLatin1String("licenseWindow")) delete sheet;
  }
  window.endCopySheet();
  shownCopy().reset();
  window.endBurnConfirmationSheet();
  window.orderOutBurnConfirmationPanel();
  for (QDialog* panel : window.findChildren<QDialog*>()) panel->hide();
  window.mediaController().removeArrangedObjects();
  window.setInsertableDiscs({}, {});
  window.burnProgressIndicator().stopAnimation();
  window.setFrame(ContentView::MountedItem, kRight, Movement::Direct);
  window.setFrame(ContentView::Burn, kRight, Movement::Direct);
  window.setFrame(ContentView::DiskScroll, kIn, Movement::Direct);
  window.setFrame(ContentView::Message, kIn, Movement::Direct);
  window.setHidden(HideableView::DiskScroll, false);
  window.setHidden(HideableView::Message, false);
  window.setHidden(HideableView::OpenButton, false);
  window.setHeaderLine(localizedString("headerDisksAvail"));
  window.setOpenButtonCaption(localizedString("buttonopen"));
}

Stillness::Stillness() {
  setLessMotionIsWanted(true);
}

Stillness::~Stillness() {
  setLessMotionIsWanted(false);
}

Language::Language(const std::string& language) {
  removeTranslations();
  loadStringsTable(language);
}

Language::~Language() {
  removeTranslations();
  loadStringsTable("en");
}

}  // namespace kelvane::testing

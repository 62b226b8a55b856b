// SPDX-License-Identifier: GPL-2.0-or-later
// Shows the main window in each of its states, filled with sample data, and saves a picture of each
// into the folder given: window_gallery FOLDER [LANGUAGE]
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QPixmap>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <cstdio>

#include "platform/foundation/bundle.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/agreement_window.h"
#include "ui/burn_summary.h"
#include "ui/erase_progress_sheet.h"
#include "ui/every_alert.h"
#include "ui/main_window.h"
#include "ui/motion.h"
#include "ui/sample_copy.h"
#include "ui/sample_records.h"
#include "ui/sliding_area.h"

namespace {

using namespace kelvane;

constexpr Rect kInWindow{0, 33, 402, 86};
constexpr Rect kLeftOfWindow{-402, 33, 402, 86};
constexpr Rect kRightOfWindow{402, 33, 402, 86};

/// Every row that the samples do not refuse can be selected; nothing else happens.
class GalleryActions : public WindowActions {
 public:
  explicit GalleryActions(MediaController& media) : media_(media) {}

  void mountBurnFS() override {}
  void tableViewDoubleClicked() override {}
  bool tableViewShouldSelectRow(int32_t row) override {
    return isUsable(media_.arrangedObjects()[static_cast<size_t>(row)]);
  }
  void showDisk() override {}
  bool volumeTakesFiles() const override { return true; }
  void burnConfirmationDidConfirm() override {}
  void burnConfirmationDidCancel() override {}
  void attemptErase() override {}

 private:
  MediaController& media_;
};

/// The window with the sheets over it, each in the middle of what is below it.
QImage composition(MainWindow& window) {
  QList<QWidget*> sheets;
  QSize size = window.size();
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (!widget->isVisible() || widget == &window) continue;
    sheets << widget;
    size = size.expandedTo(widget->size() + QSize(40, 40));
  }
  // A sheet lies over the one that it belongs to.
  std::ranges::stable_sort(sheets, {}, [](const QWidget* sheet) {
    int depth = 0;
    while ((sheet = sheet->parentWidget()) != nullptr) ++depth;
    return depth;
  });
  QImage image(size + QSize(40, 40), QImage::Format_RGB32);
  image.fill(QColor(0x9a, 0xa4, 0xb0));
  QPainter painter(&image);
  const auto drawCentered = [&](QWidget& widget) {
    const QRect frame(QPoint(), widget.size());
    const QPoint corner = image.rect().center() - frame.center();
    painter.drawPixmap(corner, widget.grab());
    painter.setPen(QColor(0x30, 0x30, 0x30));
    painter.drawRect(frame.translated(corner).adjusted(-1, -1, 0, 0));
  };
  drawCentered(window);
  for (QWidget* sheet : sheets) drawCentered(*sheet);
  return image;
}

class Gallery {
 public:
  explicit Gallery(QString folder)
      : folder_(std::move(folder)), actions_(window_.mediaController()) {
    window_.setActions(&actions_);
    setLessMotionIsWanted(true);  // Or pictures are taken while the header line slides.
    window_.setOpenButtonCaption(localizedString("buttonopen"));
    window_.setHeaderLine(localizedString("headerDisksAvail"));
    window_.makeKeyAndOrderFront();
  }

  bool shootAll() {
    empty();
    loading();
    list();
    opened();
    dropping();
    copying();
    confirming();
    burning();
    erasing();
    for (const Alert& alert : testing::everyAlert()) shootAlert(alert);
    update();
    license();
    return allSaved_;
  }

 private:
  void shoot(const QString& state) {
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    allSaved_ &=
        composition(window_).save(folder_ + QLatin1Char('/') + state + QStringLiteral(".png"));
  }

  void empty() {
    window_.setInsertableDiscs({"Holiday"}, [](size_t) {});
    window_.setHidden(HideableView::OpenButton, true);
    window_.setHidden(HideableView::DiskScroll, true);
    window_.setMessage(localizedString("insertdisk"));
    shoot(QStringLiteral("empty"));
  }

  void loading() {
    window_.setInsertableDiscs({}, {});
    window_.setMessage(localizedString("loadingdisk"));
    shoot(QStringLiteral("loading"));
  }

  void list() {
    window_.setHidden(HideableView::OpenButton, false);
    window_.setHidden(HideableView::DiskScroll, false);
    window_.setHidden(HideableView::Message, true);
    MediaController& media = window_.mediaController();
    media.addObjects(
        {testing::refusedRecord("Archive 2009", localizedString("unsupporteddiskformat")),
         testing::usableRecord("Holiday"),
         testing::refusedRecord("A volume name as long as 32 char", localizedString("diskfull"))});
    media.setSelectionIndex(1);
    shoot(QStringLiteral("list"));
  }

  void opened() {
    window_.setFrame(ContentView::DiskScroll, kLeftOfWindow, Movement::Direct);
    window_.setFrame(ContentView::Message, kLeftOfWindow, Movement::Direct);
    window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Direct);
    window_.setHeaderLine(localizedString("headerDisksRemounted"));
    window_.setOpenButtonCaption(localizedString("buttonclose"));
    window_.setVolumeNameField("Holiday");
    window_.setDeviceNameField("CDRW in KELVANE Emulated Burner");
    window_.setSizeInformationField(format(localizedString("viewSizeOfDisk"), 412));
    shoot(QStringLiteral("opened"));
  }

  /// The open disc while files hover over it.
  void dropping() {
    auto* view = window_.findChild<QWidget*>(QStringLiteral("mountedItemView"));
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/"))});
    QDragEnterEvent enter(view->rect().center(), Qt::CopyAction, &files, Qt::LeftButton,
                          Qt::NoModifier);
    QApplication::sendEvent(view, &enter);
    shoot(QStringLiteral("dropping"));
    QDragLeaveEvent leave;
    QApplication::sendEvent(view, &leave);
  }

  /// A copy that stands at the question about a name that is taken.
  void copying() {
    testing::SampleCopy copy;
    QDialog* question = copy.begin(window_);
    shoot(QStringLiteral("copy-question"));
    question->hide();
    shoot(QStringLiteral("copying"));
    window_.endCopySheet();
  }

  void confirming() {
    window_.setBurnConfirmationDiskTitle("Holiday");
    window_.beginBurnConfirmationSheet();
    shoot(QStringLiteral("confirming-looking"));
    constexpr int64_t kMegabyte = 1 << 20;
    BurnSummary summary;
    summary.changes = BurnSummary::Changes{{128, 6}, {3, 0}, {12, 1}, {45, 2}};
    summary.needed = {184 * kMegabyte, BurnSummary::Certainty::Estimated};
    summary.freeBefore = {412 * kMegabyte, BurnSummary::Certainty::Estimated};
    summary.freeAfterwards = {228 * kMegabyte, BurnSummary::Certainty::Estimated};
    window_.setBurnSummary(summary);
    shoot(QStringLiteral("confirming-guess"));
    summary.needed->certainty = BurnSummary::Certainty::Exact;
    summary.freeBefore->certainty = BurnSummary::Certainty::Exact;
    summary.freeAfterwards = {215 * kMegabyte, BurnSummary::Certainty::Exact};
    window_.setBurnSummary(summary);
    shoot(QStringLiteral("confirming"));
    summary.hiddenToo = {"Fotos/Mxller.jpg", "Mueller/", "draft.txt", "a", "b", "c"};
    window_.setBurnSummary(summary);
    shoot(QStringLiteral("confirming-hidden"));
    summary.hiddenToo.clear();
    summary.freeBefore->bytes = 150 * kMegabyte;
    summary.freeAfterwards->bytes = -34 * kMegabyte;
    window_.setBurnSummary(summary);
    shoot(QStringLiteral("confirming-too-large"));
    summary.freeAfterwards->bytes = 215 * kMegabyte;
    summary.problem = format(localizedString("ReasonFileTooLarge"), "Film.mkv");
    window_.setBurnSummary(summary);
    shoot(QStringLiteral("confirming-problem"));
    summary.problem = localizedString("ReasonDiscClosed");
    summary.problemLiesInTheDisc = true;
    window_.setBurnSummary(summary);
    shoot(QStringLiteral("confirming-in-vain"));
    summary.problem.clear();
    summary.shownStill = {"Fotos\\alt.jpg"};
    window_.setBurnSummary(summary);
    shoot(QStringLiteral("confirming-shown-still"));
    window_.endBurnConfirmationSheet();
    window_.orderOutBurnConfirmationPanel();
  }

  void burning() {
    window_.setHeaderLine(localizedString("burningdisk"));
    window_.setBurnMessage(localizedString("burningchangescd"));
    window_.setFrame(ContentView::MountedItem, kLeftOfWindow, Movement::Direct);
    window_.setFrame(ContentView::Burn, kInWindow, Movement::Direct);
    window_.burnProgressIndicator().setIndeterminate(false);
    window_.burnProgressIndicator().setDoubleValue(1.37);
    shoot(QStringLiteral("burning"));
    window_.setFrame(ContentView::Burn, kRightOfWindow, Movement::Direct);
    window_.setFrame(ContentView::DiskScroll, kInWindow, Movement::Direct);
    window_.setHeaderLine(localizedString("headerDisksAvail"));
    window_.setOpenButtonCaption(localizedString("buttonopen"));
  }

  void erasing() {
    auto* sheet = window_.findChild<EraseProgressSheet*>();
    sheet->showBeginning(localizedString("erasingdisk"));
    shoot(QStringLiteral("erase-begins"));
    sheet->showFraction(0.42);
    window_.findChild<QLabel*>(QStringLiteral("eraseRemainingField"))
        ->setText(QString::fromStdString(format(localizedString("MinutesLeft"), 12)));
    shoot(QStringLiteral("erasing"));
    sheet->showEnd({});
  }

  void shootAlert(const Alert& alert) {
    window_.beginAlertSheet(alert, {});
    shoot(QString::fromStdString("alert-" + alert.messageKey + "-" + alert.informativeKey));
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->objectName() == QStringLiteral("alertSheet")) delete widget;
    }
  }

  void update() {
    QTimer::singleShot(0, &window_, [this] {
      shoot(QStringLiteral("update"));
      QApplication::activeModalWidget()->close();
    });
    window_.runAlertModal({.style = Alert::Style::Informational,
                           .buttonKeys = {"updatecheckdownload", "cancelbutton"},
                           .messageKey = "updatecheck",
                           .informativeKey = "updatechecklong",
                           .detail = {}});
  }

  /// The agreement with its own text, at its start and at its end.
  void license() {
    AgreementWindow license;
    const auto path =
        Bundle::mainBundle().pathForResource(localizedString("LicenseResource"), "html");
    QFile file(QString::fromStdString(path.value_or(std::string())));
    if (file.open(QIODevice::ReadOnly)) license.setLicenseText(file.readAll().toStdString());
    QTimer::singleShot(0, &license, [this, &license] {
      shoot(QStringLiteral("license"));
      QScrollBar* bar = license.findChild<QTextBrowser*>()->verticalScrollBar();
      bar->setValue(bar->maximum());
      shoot(QStringLiteral("license-end"));
      license.stopModal();
    });
    license.runModal();
  }

  QString folder_;
  MainWindow window_;
  GalleryActions actions_;
  bool allSaved_ = true;
};

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() < 2 || !QDir().mkpath(arguments.at(1))) {
    std::fprintf(stderr, "usage: window_gallery FOLDER [LANGUAGE]\n");
    return 2;
  }
  kelvane::loadStringsTable(arguments.value(2).toStdString());
  return Gallery(arguments.at(1)).shootAll() ? 0 : 1;
}

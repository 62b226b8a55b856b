// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QIcon>
#include <QItemSelectionModel>
#include <QMessageBox>
#include <QProcess>
#include <QScreen>
#include <QShortcut>
#include <QUrl>
#include <QVBoxLayout>
#include <array>
#include <cmath>

#include "platform/desktop/file_manager.h"
#include "platform/desktop/notifications.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/strings_table.h"
#include "ui/alert_sheet.h"
#include "ui/animate_text_field.h"
#include "ui/burn_progress_bar.h"
#include "ui/burn_view.h"
#include "ui/confirmation_sheet.h"
#include "ui/copy_sheet.h"
#include "ui/disc_erasing.h"
#include "ui/disc_list_model.h"
#include "ui/disc_list_view.h"
#include "ui/erase_progress_sheet.h"
#include "ui/header_view.h"
#include "ui/insert_disc_button.h"
#include "ui/license_reader.h"
#include "ui/message_view.h"
#include "ui/mounted_item_view.h"
#include "ui/preferences_panel.h"
#include "ui/roomy_button.h"
#include "ui/sliding_area.h"
#include "ui/view_parts.h"
#include "ui/window_accessibility.h"
#include "ui/window_menu.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr int kMenuMargin = 6;  // Pixels between the menu's button and the side of the window.

QString toText(const std::string& text) {
  return QString::fromStdString(text);
}

/// The speeds that a burn on this medium can be told to keep: a CD is burned at 1x, at 2x or as
/// fast as the drive can.
std::span<const int32_t> speedsFor(const std::optional<std::string>& mediaType) {
  static constexpr std::array<int32_t, 2> kCdSpeeds{1, 2};
  static constexpr std::array<int32_t, 4> kDvdSpeeds{1, 2, 4, 8};
  if (mediaType && mediaType->starts_with("DVD")) return kDvdSpeeds;
  return kCdSpeeds;
}

// `key` is that of the summary. Whoever looks at the window sees it there.
void notifyOfEnd(desktop::Notifications& notifications, desktop::Notice::Kind kind,
                 const std::string& key) {
  if (QApplication::activeWindow() != nullptr) return;
  desktop::Notice notice;
  notice.kind = kind;
  notice.summary = localizedString(key);
  notice.body = localizedString(key + "Long");
  notifications.show(notice);
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QWidget(parent) {
  installWindowAccessibility();
  setObjectName(QStringLiteral("mainWindow"));
  if (const auto icon = Bundle::mainBundle().pathForResource("diskicon", "png")) {
    setWindowIcon(QIcon(toText(*icon)));
  }
  addContentViews();
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(makeHeader());
  column->addWidget(contentArea_);
  column->addWidget(makeButtonBar());
  column->setSizeConstraint(QLayout::SetFixedSize);
  burnConfirmationPanel_ = new ConfirmationSheet(this);
  copyPanel_ = new CopySheet(this);
  eraseProgressPanel_ = new EraseProgressSheet(this);
  prefsPanel_ = new PreferencesPanel(this);
  licenseReader_ = new LicenseReader(this);
  notifications_ = new desktop::Notifications([this] { makeKeyAndOrderFront(); }, this);
  connectActions();
  addMenuEntries();
  addShortcuts();
  applyScale();
  adaptButtons();
  mediaController_.setChangeHandler([this] { showMediaController(); });
}

MainWindow::~MainWindow() {
  mediaController_.setChangeHandler({});
}

QWidget* MainWindow::makeHeader() {
  header_ = new QWidget(this);
  headerBackground_ = new HeaderView(header_);
  windowMenu_ = new WindowMenu(header_);
  auto* row = new QHBoxLayout(header_);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  row->addWidget(headerBackground_, 1);
  row->addWidget(windowMenu_);
  row->addSpacing(kMenuMargin);
  return header_;
}

QWidget* MainWindow::makeDiskScrollView() {
  diskScrollView_ = new QWidget(this);
  diskScrollView_->setObjectName(QStringLiteral("diskScrollView"));
  diskTable_ = new DiscListView(diskScrollView_);
  diskTable_->setObjectName(QStringLiteral("diskTableView"));
  diskTable_->setAccessibleName(localizedText("AccessibleDiskList"));
  diskTable_->setAccessibleDescription(localizedText("AccessibleDiskListLong"));
  discList_ = new DiscListModel(diskTable_);
  diskTable_->setModel(discList_);
  auto* layout = new QVBoxLayout(diskScrollView_);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(diskTable_);
  return diskScrollView_;
}

QWidget* MainWindow::makeButtonBar() {
  buttonBar_ = new QWidget(this);
  insertDiscButton_ = new InsertDiscButton(buttonBar_);
  showDiskButton_ = makeButton("showDiskButton", "ShowDisk", buttonBar_);
  showDiskButton_->setAccessibleDescription(localizedText("ShowDiskLong"));
  showDiskButton_->setToolTip(localizedText("ShowDiskLong"));
  eraseButton_ = makeButton("eraseButton", "EraseDisc", buttonBar_);
  eraseButton_->setAccessibleDescription(localizedText("EraseDiscLong"));
  eraseButton_->setToolTip(localizedText("EraseDiscLong"));
  openButton_ = new RoomyButton(buttonBar_);
  openButton_->setObjectName(QStringLiteral("openButton"));
  auto* row = new QHBoxLayout(buttonBar_);
  row->setContentsMargins(kSideMargin, 0, kSideMargin, 0);
  row->addWidget(insertDiscButton_);
  row->addWidget(showDiskButton_);
  row->addStretch();
  row->addWidget(eraseButton_);
  row->addWidget(openButton_);
  return buttonBar_;
}

void MainWindow::addContentViews() {
  contentArea_ = new SlidingArea(this);
  contentArea_->setObjectName(QStringLiteral("contentArea"));
  const Rect inWindow{0, kButtonBarHeight, kWindowWidth, kContentHeight};
  const Rect rightOfWindow{kWindowWidth, kButtonBarHeight, kWindowWidth, kContentHeight};
  burnView_ = new KVBurnView(contentArea_);
  mountedItemView_ = new MountedItemView(contentArea_);
  messageView_ = new MessageView(contentArea_);
  contentArea_->addView(ContentView::Burn, burnView_, rightOfWindow);
  contentArea_->addView(ContentView::MountedItem, mountedItemView_, rightOfWindow);
  contentArea_->addView(ContentView::Message, messageView_, inWindow);
  contentArea_->addView(ContentView::DiskScroll, makeDiskScrollView(), inWindow);
}

void MainWindow::connectActions() {
  diskTable_->setRowRule(
      [this](int row) { return !actions_ || actions_->tableViewShouldSelectRow(row); });
  diskTable_->setDoubleAction([this] {
    if (actions_) actions_->tableViewDoubleClicked();
  });
  connect(diskTable_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          [this] { selectInMediaController(); });
  connect(openButton_, &RoomyButton::clicked, this, [this] {
    if (actions_) actions_->mountBurnFS();
  });
  connect(showDiskButton_, &RoomyButton::clicked, this, [this] {
    if (actions_) actions_->showDisk();
  });
  connect(eraseButton_, &RoomyButton::clicked, this, [this] {
    if (const auto row = erasableRow(mediaController_)) askToErase(*row);
  });
  diskTable_->setMenuAction([this](int row, QPoint where) {
    showEraseMenu(mediaController_, static_cast<size_t>(row), *diskTable_, where,
                  [this](size_t chosen) { askToErase(chosen); });
  });
  connect(&burnView_->progressIndicator(), &BurnProgressBar::percentChanged, this,
          [this](int percent) { showPercent(percent); });
  connect(eraseProgressPanel_, &EraseProgressSheet::percentChanged, this,
          [this](int percent) { showPercent(percent); });
  connect(eraseProgressPanel_, &QDialog::finished, this, [this](int result) {
    if (result == QDialog::Accepted) {
      notifyOfEnd(*notifications_, desktop::Notice::Kind::Success, "NoticeErased");
    } else {
      notifyOfEnd(*notifications_, desktop::Notice::Kind::Failure, "NoticeEraseFailed");
    }
  });
  prefsPanel_->setLicenseHandler([this] { showLicense(); });
  burnConfirmationPanel_->setConfirmHandler([this] {
    if (actions_) actions_->burnConfirmationDidConfirm();
  });
  burnConfirmationPanel_->setKeepHandler([this] {
    if (actions_) actions_->burnConfirmationDidKeep();
  });
  mountedItemView_->setFileHandler([this] { return actions_ && actions_->volumeTakesFiles(); },
                                   [this](const std::vector<std::string>& paths) {
                                     if (actions_) actions_->addFiles(paths);
                                   });
  burnConfirmationPanel_->setCancelHandler([this] {
    if (actions_) actions_->burnConfirmationDidCancel();
  });
}

// The standard keys for quitting and for preferences are not bound on every desktop.
void MainWindow::addMenuEntries() {
  windowMenu_->addEntry(*this, "preferencesEntry", "MenuPreferences",
                        QKeySequence(Qt::CTRL | Qt::Key_Comma), [this] { prefsPanel_->present(); });
  windowMenu_->addEntry(*this, "licenseEntry", "MenuLicense", {}, [this] { showLicense(); });
  windowMenu_->addEntry(*this, "quitEntry", "MenuQuit", QKeySequence(Qt::CTRL | Qt::Key_Q),
                        [this] { terminate(); });
}

void MainWindow::addShortcuts() {
  // Of no effect while the view is out of sight.
  connect(new QShortcut(QKeySequence::Paste, mountedItemView_), &QShortcut::activated, this,
          [this] {
            if (!mountedItemView_->paste()) beep();
          });
  connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this,
          [this] { close(); });
  connect(new QShortcut(QKeySequence::Open, this), &QShortcut::activated, this, [this] {
    if (openButton_->isVisible()) openButton_->click();
  });
  connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_E), this), &QShortcut::activated, this,
          [this] {
            if (eraseButton_->isVisible()) eraseButton_->click();
          });
}

void MainWindow::applyScale() {
  header_->setFixedSize(toPixels(kWindowWidth, font()), toPixels(kHeaderHeight, font()));
  buttonBar_->setFixedSize(toPixels(kWindowWidth, font()), toPixels(kButtonBarHeight, font()));
}

// A disc can be inserted while none is open, its files can be shown while it is, and while it is
// being burned it can be neither opened nor closed nor erased.
void MainWindow::adaptButtons() {
  const bool open = contentArea_->isArriving(ContentView::MountedItem);
  const bool burning = contentArea_->isArriving(ContentView::Burn);
  insertDiscButton_->setVisible(insertDiscButton_->hasDiscs() && !open && !burning);
  showDiskButton_->setVisible(open);
  openButton_->setEnabled(!burning);
  eraseButton_->setVisible(anyErasable(mediaController_) && !burning);
  eraseButton_->setEnabled(erasableRow(mediaController_).has_value());
}

void MainWindow::showPercent(int percent) {
  status_.setPercent(percent < 0 ? std::nullopt : std::optional(percent));
}

// A disc is open while its view or that of its burn is in sight.
void MainWindow::adaptStatus() {
  const bool burning = contentArea_->isArriving(ContentView::Burn);
  const bool open = burning || contentArea_->isArriving(ContentView::MountedItem);
  status_.setOpenDisc(open ? mountedItemView_->volumeNameField()->text() : QString());
  if (!burning) status_.setPercent(std::nullopt);
}

// Selected or not, the disc to be erased is the selected one from now on, and is seen to be.
void MainWindow::askToErase(size_t row) {
  mediaController_.setSelectionIndex(row);
  if (actions_) actions_->attemptErase();
}

void MainWindow::setUpdateChecks(UpdateChecks checks) {
  prefsPanel_->setUpdateChecks(checks);
}

void MainWindow::showLicense() {
  licenseReader_->present(licenseSource_ ? licenseSource_() : std::string());
}

void MainWindow::setInsertableDiscs(const std::vector<std::string>& names,
                                    std::function<void(size_t index)> insert) {
  insertDiscButton_->setDiscs(names, std::move(insert));
  adaptButtons();
}

void MainWindow::centerWindows() {
  if (!screen()) return;
  for (QWidget* window : std::initializer_list<QWidget*>{prefsPanel_, this}) {
    window->adjustSize();
    QRect frame = window->frameGeometry();
    frame.moveCenter(screen()->availableGeometry().center());
    window->move(frame.topLeft());
  }
}

void MainWindow::makeKeyAndOrderFront() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void MainWindow::setHidden(HideableView view, bool hidden) {
  switch (view) {
    case HideableView::OpenButton:
      openButton_->setHidden(hidden);
      break;
    case HideableView::DiskTable:
      diskTable_->setHidden(hidden);
      break;
    case HideableView::DiskScroll:
      contentArea_->setViewHidden(ContentView::DiskScroll, hidden);
      break;
    case HideableView::Message:
      contentArea_->setViewHidden(ContentView::Message, hidden);
      break;
  }
}

void MainWindow::setFrame(ContentView view, Rect frame, Movement movement) {
  contentArea_->setFrame(view, frame, movement);
  adaptButtons();
  adaptStatus();
}

void MainWindow::setAnimationDuration(double seconds) {
  contentArea_->setAnimationDuration(std::chrono::milliseconds(std::llround(seconds * 1000)));
}

void MainWindow::setHeaderLine(const std::string& text) {
  headerBackground_->line().setStringValue(toText(text));
}

void MainWindow::setOpenButtonCaption(const std::string& text) {
  openButton_->setCaption(toText(text));
}

void MainWindow::setMessage(const std::string& text) {
  messageView_->setMessage(toText(text));
}

void MainWindow::setVolumeNameField(const std::string& text) {
  setFieldText(*mountedItemView_->volumeNameField(), toText(text));
  adaptStatus();
}

void MainWindow::setDeviceNameField(const std::string& text) {
  setFieldText(*mountedItemView_->deviceNameField(), toText(text));
}

void MainWindow::setSizeInformationField(const std::string& text) {
  setFieldText(*mountedItemView_->sizeInformationField(), toText(text));
}

void MainWindow::setBurnMessage(const std::string& text) {
  burnView_->setMessage(toText(text));
}

ProgressIndicator& MainWindow::burnProgressIndicator() {
  return burnView_->progressIndicator();
}

int32_t MainWindow::burnSpeedTag() {
  return burnConfirmationPanel_->speedTag();
}

void MainWindow::setBurnConfirmationDiskTitle(const std::string& volumeName) {
  burnConfirmationPanel_->setDiskTitle(toText(volumeName));
}

std::string MainWindow::burnConfirmationDiskTitle() {
  return burnConfirmationPanel_->diskTitle().toStdString();
}

void MainWindow::beginBurnConfirmationSheet() {
  const std::vector<DeviceRecord> selected = mediaController_.selectedObjects();
  burnConfirmationPanel_->setSpeeds(
      speedsFor(selected.empty() ? std::nullopt : selected.back().description.mediatype));
  burnConfirmationPanel_->begin();
}

void MainWindow::endBurnConfirmationSheet() {
  burnConfirmationPanel_->done(QDialog::Accepted);
}

void MainWindow::orderOutBurnConfirmationPanel() {
  burnConfirmationPanel_->hide();
}

void MainWindow::setBurnSummary(const BurnSummary& summary) {
  burnConfirmationPanel_->setSummary(summary);
}

void MainWindow::beginCopySheet(const CopyRequest& request) {
  copyPanel_->begin(request);
}

bool MainWindow::isCopying() const {
  return copyPanel_->isCopying();
}

void MainWindow::endCopySheet() {
  copyPanel_->cancelAndWait();
}

void MainWindow::beginAlertSheet(const Alert& alert, std::function<void(int returnCode)> didEnd) {
  openAlertSheet(this, alert, std::move(didEnd));
}

// Until start-up is through, another window may be the one that is shown.
int MainWindow::runAlertModal(const Alert& alert) {
  return kelvane::runAlertModal(isVisible() ? this : QApplication::activeModalWidget(), alert);
}

void MainWindow::afterAlerts(std::function<void()> next) {
  const auto* alert = findChild<QMessageBox*>(QStringLiteral("alertSheet"));
  if (!alert) {
    next();
    return;
  }
  connect(
      alert, &QObject::destroyed, this, [this, next = std::move(next)] { afterAlerts(next); },
      Qt::QueuedConnection);
}

DREraseProgressPanel& MainWindow::eraseProgressPanel() {
  return *eraseProgressPanel_;
}

void MainWindow::burnDidEnd(BurnEnd end) {
  if (end == BurnEnd::Failed) {
    notifyOfEnd(*notifications_, desktop::Notice::Kind::Failure, "NoticeBurnFailed");
  } else {
    notifyOfEnd(*notifications_, desktop::Notice::Kind::Success, "NoticeBurned");
  }
}

void MainWindow::beep() {
  QApplication::beep();
}

void MainWindow::selectFile(const std::string& path, const std::string& root) {
  // What is selected is a volume or folder, and a file manager that opens it shows what the user is
  // after; the folder around it would be one step too far up.
  Q_UNUSED(root);
  desktop::showInFileManager(path, this, [this, path] { openFile(path); });
}

// A program is what opening it means to a user: it is started, and goes on without this one.
void MainWindow::openFile(const std::string& path) {
  const QFileInfo file(toText(path));
  if (file.isFile() && file.isExecutable()) {
    QProcess::startDetached(file.absoluteFilePath(), {});
    return;
  }
  QDesktopServices::openUrl(QUrl::fromLocalFile(toText(path)));
}

void MainWindow::openURL(const std::string& url) {
  QDesktopServices::openUrl(QUrl(toText(url)));
}

void MainWindow::hideApplication() {
  showMinimized();
}

void MainWindow::setQuitHandler(std::function<void()> quitRequested) {
  quitRequested_ = std::move(quitRequested);
}

void MainWindow::setTerminateReplyHandler(std::function<void(bool shouldTerminate)> replied) {
  terminateReplied_ = std::move(replied);
}

void MainWindow::terminate() {
  if (quitRequested_) quitRequested_();
}

void MainWindow::replyToApplicationShouldTerminate(bool shouldTerminate) {
  if (terminateReplied_) terminateReplied_(shouldTerminate);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!closingAllowed_) terminate();
  // The answer may have come at once.
  event->setAccepted(closingAllowed_);
}

void MainWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange && buttonBar_) applyScale();
}

void MainWindow::showMediaController() {
  discList_->setRecords(mediaController_.arrangedObjects());
  adaptButtons();
  const std::optional<size_t> selected = mediaController_.selectionIndex();
  if (!selected || *selected >= mediaController_.arrangedObjects().size()) {
    diskTable_->clearSelection();
    return;
  }
  // Past the row rule: the list's own selection is shown as it is.
  diskTable_->selectionModel()->setCurrentIndex(discList_->index(static_cast<int>(*selected)),
                                                QItemSelectionModel::ClearAndSelect);
}

void MainWindow::selectInMediaController() {
  const QModelIndexList rows = diskTable_->selectionModel()->selectedIndexes();
  if (rows.isEmpty()) return;
  const auto row = static_cast<size_t>(rows.front().row());
  if (mediaController_.selectionIndex() != row) mediaController_.setSelectionIndex(row);
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// The main window: what it consists of, and where that stands.
#include "ui/main_window.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QScreen>
#include <QVBoxLayout>

#include "platform/desktop/motion_setting.h"
#include "platform/desktop/notifications.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/strings_table.h"
#include "ui/burn_view.h"
#include "ui/confirmation_sheet.h"
#include "ui/copy_sheet.h"
#include "ui/disc_list_model.h"
#include "ui/disc_list_view.h"
#include "ui/erase_progress_sheet.h"
#include "ui/erase_question.h"
#include "ui/header_view.h"
#include "ui/insert_disc_button.h"
#include "ui/license_reader.h"
#include "ui/message_view.h"
#include "ui/motion.h"
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

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QWidget(parent) {
  installWindowAccessibility();
  setObjectName(QStringLiteral("mainWindow"));
  if (const auto icon = Bundle::mainBundle().pathForResource("diskicon", "png")) {
    setWindowIcon(QIcon(QString::fromStdString(*icon)));
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
  eraseQuestion_ = new EraseQuestion(mediaController_, this);
  prefsPanel_ = new PreferencesPanel(this);
  licenseReader_ = new LicenseReader(this);
  notifications_ = new desktop::Notifications([this] { makeKeyAndOrderFront(); }, this);
  motionSetting_ = std::make_unique<desktop::MotionSetting>(setLessMotionIsWanted);
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

void MainWindow::applyScale() {
  header_->setFixedSize(toPixels(kWindowWidth, font()), toPixels(kHeaderHeight, font()));
  buttonBar_->setFixedSize(toPixels(kWindowWidth, font()), toPixels(kButtonBarHeight, font()));
}

void MainWindow::setUpdateChecks(UpdateChecks checks) {
  prefsPanel_->setUpdateChecks(checks);
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

void MainWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange && buttonBar_) applyScale();
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// The main window: what the user does in it and whom it tells, and what can be done when.
#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMessageBox>
#include <QShortcut>

#include "platform/desktop/notifications.h"
#include "platform/foundation/strings_table.h"
#include "ui/burn_progress_bar.h"
#include "ui/burn_view.h"
#include "ui/confirmation_sheet.h"
#include "ui/copy_sheet.h"
#include "ui/disc_erasing.h"
#include "ui/disc_list_model.h"
#include "ui/disc_list_view.h"
#include "ui/erase_progress_sheet.h"
#include "ui/erase_question.h"
#include "ui/file_chooser.h"
#include "ui/insert_disc_button.h"
#include "ui/license_reader.h"
#include "ui/mounted_item_view.h"
#include "ui/preferences_panel.h"
#include "ui/roomy_button.h"
#include "ui/sliding_area.h"
#include "ui/window_menu.h"

namespace kelvane {

// Whoever looks at the window sees it there.
void MainWindow::notifyOfEnd(desktop::Notice::Kind kind, const std::string& key) {
  if (QApplication::activeWindow() != nullptr) return;
  desktop::Notice notice;
  notice.kind = kind;
  notice.summary = localizedString(key);
  notice.body = localizedString(key + "Long");
  notifications_->show(notice);
}

void MainWindow::connectActions() {
  diskTable_->setRowRule([this](int row) {
    return !actions_ || (!actions_->discIsTaken() && actions_->tableViewShouldSelectRow(row));
  });
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
    if (actions_ && actions_->discIsTaken()) return;
    showEraseMenu(mediaController_, static_cast<size_t>(row), *diskTable_, where,
                  [this](size_t chosen) { askToErase(chosen); });
  });
  connect(&burnView_->progressIndicator(), &BurnProgressBar::percentChanged, this,
          [this](int percent) { showPercent(percent); });
  connect(copyPanel_, &CopySheet::percentChanged, this,
          [this](int percent) { showPercent(percent); });
  connect(eraseProgressPanel_, &EraseProgressSheet::percentChanged, this,
          [this](int percent) { showPercent(percent); });
  connect(eraseProgressPanel_, &QDialog::finished, this, [this](int result) {
    if (result == QDialog::Accepted) {
      notifyOfEnd(desktop::Notice::Kind::Success, "NoticeErased");
    } else {
      notifyOfEnd(desktop::Notice::Kind::Failure, "NoticeEraseFailed");
    }
    if (eraseEnded_) eraseEnded_();
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
  const auto addEntry = [this](const char* name, const char* key, const QKeySequence& shortcut,
                               Choice choice) {
    return windowMenu_->addEntry(*this, name, key, shortcut, [this, choice] { addFiles(choice); });
  };
  addFilesEntry_ = addEntry("addFilesEntry", "MenuAddFiles",
                            QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), Choice::Files);
  addFolderEntry_ = addEntry("addFolderEntry", "MenuAddFolder",
                             QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D), Choice::Folder);
  windowMenu_->addEntry(*this, "preferencesEntry", "MenuPreferences",
                        QKeySequence(Qt::CTRL | Qt::Key_Comma), [this] { prefsPanel_->present(); });
  windowMenu_->addEntry(*this, "licenseEntry", "MenuLicense", {}, [this] { showLicense(); });
  windowMenu_->addEntry(*this, "quitEntry", "MenuQuit", QKeySequence(Qt::CTRL | Qt::Key_Q),
                        [this] { terminate(); });
}

// The same copying as that of files which are dropped, for whoever has only the keyboard.
void MainWindow::addFiles(Choice choice) {
  if (!actions_ || !actions_->volumeTakesFiles()) {
    beep();
    return;
  }
  chooseForDisc(*this, choice, [this](const std::vector<std::string>& paths) {
    if (actions_) actions_->addFiles(paths);
  });
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

// A disc can be inserted while none is open, its files can be shown while it is, and while it is
// being burned it can be neither opened nor closed nor erased.
void MainWindow::adaptButtons() {
  const bool open = contentArea_->isArriving(ContentView::MountedItem);
  const bool burning = contentArea_->isArriving(ContentView::Burn);
  insertDiscButton_->setVisible(insertDiscButton_->hasDiscs() && !open && !burning);
  showDiskButton_->setVisible(open);
  openButton_->setEnabled(!burning);
  for (QAction* entry : {addFilesEntry_, addFolderEntry_}) entry->setEnabled(open);
  eraseButton_->setVisible(anyErasable(mediaController_) && !burning);
  eraseButton_->setEnabled(erasableRow(mediaController_).has_value());
}

void MainWindow::showPercent(int percent) {
  status_.setPercent(percent < 0 ? std::nullopt : std::optional(percent));
}

// A disc is open while its view or that of its burn is in sight. What tells how far it is goes on
// telling it.
void MainWindow::adaptStatus() {
  const bool burning = contentArea_->isArriving(ContentView::Burn);
  const bool open = burning || contentArea_->isArriving(ContentView::MountedItem);
  status_.setOpenDisc(open ? mountedItemView_->volumeNameField()->text() : QString());
  const bool isToldHowFar = burning || copyPanel_->isCopying() || eraseProgressPanel_->isErasing();
  if (!isToldHowFar) status_.setPercent(std::nullopt);
}

// Selected or not, the disc to be erased is the selected one while the question stands, and is seen
// to be.
void MainWindow::askToErase(size_t row) {
  if (!actions_) return;
  const std::optional<size_t> rowBefore = mediaController_.selectionIndex();
  if (actions_->discIsTaken() && rowBefore != row) return;
  mediaController_.setSelectionIndex(row);
  newestAlert_.clear();
  actions_->attemptErase();
  if (newestAlert_) eraseQuestion_->follow(newestAlert_, rowBefore);
}

void MainWindow::showLicense() {
  licenseReader_->present(licenseSource_ ? licenseSource_() : std::string());
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

void MainWindow::setQuitHandler(std::function<void()> quitRequested) {
  quitRequested_ = std::move(quitRequested);
}

void MainWindow::setTerminateReplyHandler(std::function<void(bool shouldTerminate)> replied) {
  terminateReplied_ = std::move(replied);
}

void MainWindow::setEraseEndHandler(std::function<void()> eraseEnded) {
  eraseEnded_ = std::move(eraseEnded);
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

void MainWindow::showMediaController() {
  discList_->setRecords(mediaController_.arrangedObjects());
  eraseQuestion_->discsHaveChanged();
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

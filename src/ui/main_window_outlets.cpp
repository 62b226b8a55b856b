// SPDX-License-Identifier: GPL-2.0-or-later
// The main window: what the controller shows by it.
#include "ui/main_window.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>
#include <array>
#include <cmath>

#include "platform/desktop/file_manager.h"
#include "platform/desktop/notifications.h"
#include "ui/alert_sheet.h"
#include "ui/animate_text_field.h"
#include "ui/burn_progress_bar.h"
#include "ui/burn_view.h"
#include "ui/confirmation_sheet.h"
#include "ui/copy_sheet.h"
#include "ui/disc_list_view.h"
#include "ui/erase_progress_sheet.h"
#include "ui/header_view.h"
#include "ui/message_view.h"
#include "ui/mounted_item_view.h"
#include "ui/roomy_button.h"
#include "ui/sliding_area.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

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

}  // namespace

void MainWindow::setHidden(HideableView view, bool hidden) {
  switch (view) {
    case HideableView::OpenButton:
      openButton_->setHidden(hidden);
      break;
    case HideableView::DiskTable:
      diskTable_->setHidden(hidden);
      break;
    case HideableView::DiskScroll:
      // A disc that was loaded alone has hidden the table, and nobody else shows it again: the list
      // would be empty from then on.
      if (!hidden) diskTable_->show();
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
  newestAlert_ = openAlertSheet(this, alert, std::move(didEnd));
}

// Until start-up is through, another window may be the one that is shown.
int MainWindow::runAlertModal(const Alert& alert) {
  return kelvane::runAlertModal(isVisible() ? this : QApplication::activeModalWidget(), alert);
}

DREraseProgressPanel& MainWindow::eraseProgressPanel() {
  return *eraseProgressPanel_;
}

bool MainWindow::isErasing() const {
  return eraseProgressPanel_->isErasing();
}

void MainWindow::burnDidEnd(BurnEnd end) {
  if (end == BurnEnd::Failed) {
    notifyOfEnd(desktop::Notice::Kind::Failure, "NoticeBurnFailed");
  } else {
    notifyOfEnd(desktop::Notice::Kind::Success, "NoticeBurned");
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

}  // namespace kelvane

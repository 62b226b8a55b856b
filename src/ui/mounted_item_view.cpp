// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/mounted_item_view.h"

#include <QClipboard>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "ui/display_colors.h"
#include "ui/dropped_files.h"
#include "ui/elided_label.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

QLabel* makeField(const char* name, const char* accessibleKey, QWidget* parent) {
  auto* field = new ElidedLabel(parent);
  field->setObjectName(QLatin1String(name));
  field->setAccessibleName(localizedText(accessibleKey));
  return field;
}

void makeSecondary(QLabel* label) {
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, display_colors::kSecondaryText);
  label->setPalette(palette);
}

}  // namespace

MountedItemView::MountedItemView(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("mountedItemView"));
  setAccessibleName(localizedText("AccessibleMountedItem"));
  setAccessibleDescription(localizedText("AccessibleMountedItemLong"));
  setToolTip(localizedText("AccessibleMountedItemLong"));
  setAcceptDrops(true);
  volumeNameField_ = makeField("volumeNameField", "AccessibleVolumeName", this);
  deviceNameField_ = makeField("deviceNameField", "AccessibleDeviceName", this);
  sizeInformationField_ = makeField("sizeInformationField", "AccessibleSizeInformation", this);

  QFont bold = font();
  bold.setBold(true);
  volumeNameField_->setFont(bold);
  makeSecondary(deviceNameField_);

  auto* lines = new QVBoxLayout;
  lines->setSpacing(3);
  lines->addStretch();
  lines->addWidget(volumeNameField_);
  lines->addWidget(deviceNameField_);
  lines->addWidget(sizeInformationField_);
  lines->addStretch();

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(kSideMargin, 0, kSideMargin, 0);
  layout->setSpacing(16);
  layout->addWidget(makeDiscPicture(Shade::Full, this));
  layout->addLayout(lines, 1);
}

void MountedItemView::setFileHandler(
    std::function<bool()> takesFiles,
    std::function<void(const std::vector<std::string>& paths)> filesDropped) {
  takesFiles_ = std::move(takesFiles);
  filesDropped_ = std::move(filesDropped);
}

bool MountedItemView::takes(const QMimeData* offered) const {
  return filesDropped_ && takesFiles_ && takesFiles_() && localFilesIn(offered);
}

bool MountedItemView::hand(const QMimeData* offered) {
  if (!takes(offered)) return false;
  filesDropped_(*localFilesIn(offered));
  return true;
}

bool MountedItemView::paste() {
  return hand(QGuiApplication::clipboard()->mimeData());
}

// The files are copied, whatever whoever drags them proposes: a move would delete them.
void MountedItemView::dragEnterEvent(QDragEnterEvent* event) {
  const bool canCopy = event->possibleActions().testFlag(Qt::CopyAction);
  if (!canCopy || !takes(event->mimeData())) {
    event->ignore();
    return;
  }
  setHighlighted(true);
  event->setDropAction(Qt::CopyAction);
  event->accept();
}

void MountedItemView::dragLeaveEvent(QDragLeaveEvent* event) {
  setHighlighted(false);
  QWidget::dragLeaveEvent(event);
}

void MountedItemView::dropEvent(QDropEvent* event) {
  setHighlighted(false);
  event->setDropAction(Qt::CopyAction);
  event->setAccepted(hand(event->mimeData()));
}

void MountedItemView::setHighlighted(bool highlighted) {
  highlighted_ = highlighted;
  update();
}

void MountedItemView::paintEvent(QPaintEvent* event) {
  QWidget::paintEvent(event);
  if (!highlighted_) return;
  constexpr int kInset = 4;
  constexpr qreal kRadius = 6;
  constexpr int kFillOpacity = 70;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QColor fill = display_colors::kSelection;
  fill.setAlpha(kFillOpacity);
  painter.setBrush(fill);
  painter.setPen(QPen(display_colors::kText, 1.5, Qt::DashLine));
  painter.drawRoundedRect(rect().adjusted(kInset, kInset, -kInset, -kInset), kRadius, kRadius);
}

}  // namespace kelvane

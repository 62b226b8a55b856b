// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/mounted_item_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "ui/display_colors.h"
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

}  // namespace kelvane

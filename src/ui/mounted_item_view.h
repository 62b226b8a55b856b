// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

class QLabel;

namespace kelvane {

/// The content view of the opened disc: its name, medium and drive, and free space.
class MountedItemView : public QWidget {
  Q_OBJECT

 public:
  explicit MountedItemView(QWidget* parent = nullptr);

  QLabel* volumeNameField() const { return volumeNameField_; }
  QLabel* deviceNameField() const { return deviceNameField_; }
  QLabel* sizeInformationField() const { return sizeInformationField_; }

 private:
  // All are children of this widget.
  QLabel* volumeNameField_;
  QLabel* deviceNameField_;
  QLabel* sizeInformationField_;
};

}  // namespace kelvane

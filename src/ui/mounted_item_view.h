// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;

namespace kelvane {

/// The content view of the opened disc: its name, medium and drive, free space, and the button that
/// shows its files.
class MountedItemView : public QWidget {
  Q_OBJECT

 public:
  explicit MountedItemView(QWidget* parent = nullptr);

  QLabel* volumeNameField() const { return volumeNameField_; }
  QLabel* deviceNameField() const { return deviceNameField_; }
  QLabel* sizeInformationField() const { return sizeInformationField_; }
  QPushButton* showDiskButton() const { return showDiskButton_; }

 private:
  // All are children of this widget.
  QLabel* volumeNameField_;
  QLabel* deviceNameField_;
  QLabel* sizeInformationField_;
  QPushButton* showDiskButton_;
};

}  // namespace kelvane

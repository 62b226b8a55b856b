// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class QLabel;
class QMimeData;

namespace kelvane {

/// The content view of the opened disc: its name, medium and drive, and free space.
///
/// Files and folders of this machine can be dropped onto it, and it shows that while they hover.
class MountedItemView : public QWidget {
  Q_OBJECT

 public:
  explicit MountedItemView(QWidget* parent = nullptr);

  QLabel* volumeNameField() const { return volumeNameField_; }
  QLabel* deviceNameField() const { return deviceNameField_; }
  QLabel* sizeInformationField() const { return sizeInformationField_; }

  /// Whether files would be taken now, and who gets their paths. Nothing is taken without them.
  void setFileHandler(std::function<bool()> takesFiles,
                      std::function<void(const std::vector<std::string>& paths)> filesDropped);
  /// Takes the files that were copied to the clipboard. False, and nothing happens, where there are
  /// none or they are not taken now.
  bool paste();

  /// Whether something hovers that would be taken.
  bool isHighlighted() const { return highlighted_; }

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  bool takes(const QMimeData* offered) const;
  bool hand(const QMimeData* offered);
  void setHighlighted(bool highlighted);

  // All are children of this widget.
  QLabel* volumeNameField_;
  QLabel* deviceNameField_;
  QLabel* sizeInformationField_;
  std::function<bool()> takesFiles_;
  std::function<void(const std::vector<std::string>& paths)> filesDropped_;
  bool highlighted_ = false;
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>
#include <cstdint>
#include <functional>
#include <span>

class QComboBox;
class QLayout;
class QLineEdit;

namespace kelvane {

class RoomyButton;

/// The burn confirmation panel: asks whether to burn the changes, with which name and how fast.
///
/// It answers through its two handlers and stays up until it is taken away. Leaving it by Escape or
/// by closing it could cost the user all changes by one key, so that way asks once more.
class ConfirmationSheet : public QDialog {
  Q_OBJECT

 public:
  explicit ConfirmationSheet(QWidget* parent);

  void setConfirmHandler(std::function<void()> confirmed) { confirmed_ = std::move(confirmed); }
  void setCancelHandler(std::function<void()> cancelled) { cancelled_ = std::move(cancelled); }

  void setDiskTitle(const QString& volumeName);
  QString diskTitle() const;

  /// Offers these multiples of 1x besides the drive's fastest speed, which becomes the selected
  /// one.
  void setSpeeds(std::span<const int32_t> multiples);
  /// 0 for the drive's fastest speed, otherwise the multiple of 1x.
  int32_t speedTag() const;

  /// Opens the sheet over its parent and returns; the name is selected for typing over it.
  void begin();

 public Q_SLOTS:
  void reject() override;

 private:
  QLayout* makeFields();
  QLayout* makeButtons();

  std::function<void()> confirmed_;
  std::function<void()> cancelled_;
  // All are children of this dialog.
  QLineEdit* diskTitle_;
  QComboBox* speedPopup_;
  RoomyButton* burnButton_;
  RoomyButton* discardButton_;
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>
#include <QPointer>
#include <cstdint>
#include <functional>
#include <span>

class QComboBox;
class QLayout;
class QLineEdit;

namespace kelvane {

class ChangeSummaryView;
class RoomyButton;
class WarningBox;
struct BurnSummary;

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

  void setKeepHandler(std::function<void()> kept) { kept_ = std::move(kept); }

  void setDiskTitle(const QString& volumeName);
  QString diskTitle() const;

  /// Offers these multiples of 1x besides the drive's fastest speed, which becomes the selected
  /// one.
  void setSpeeds(std::span<const int32_t> multiples);
  /// 0 for the drive's fastest speed, otherwise the multiple of 1x.
  int32_t speedTag() const;

  /// Opens the sheet over its parent and returns; the name is selected for typing over it. Nothing
  /// is known yet of what will change.
  void begin();

  /// Tells what is known now. Where something stands against the burn the sheet says so, and offers
  /// to keep the changes; where the burn is bound to fail, Return does that.
  void setSummary(const BurnSummary& summary);

 public Q_SLOTS:
  void reject() override;
  /// Takes the question along that `reject` asks.
  void done(int result) override;

 private:
  QLayout* makeFields();
  QLayout* makeButtons();
  void showWarnings(const BurnSummary& summary);

  std::function<void()> confirmed_;
  std::function<void()> cancelled_;
  std::function<void()> kept_;
  // All are children of this dialog.
  QLineEdit* diskTitle_;
  QComboBox* speedPopup_;
  RoomyButton* burnButton_;
  RoomyButton* discardButton_;
  RoomyButton* keepButton_;
  ChangeSummaryView* summary_;
  WarningBox* problem_;
  WarningBox* tooLarge_;
  WarningBox* hiddenToo_;
  WarningBox* shownStill_;
  QPointer<QDialog> question_;
};

}  // namespace kelvane

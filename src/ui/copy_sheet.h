// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "ui/copy_job.h"
#include "ui/copy_question.h"
#include "ui/remaining_time.h"

class QLabel;
class QProgressBar;
class QTimer;

namespace kelvane {

class ElidedLabel;
class RoomyButton;

/// Copies files onto the volume, as a sheet that tells how far it is and can cancel it.
///
/// The copying is done on a thread of its own. Names that are taken are asked about; what could not
/// be copied is told by an alert at the end. Main thread only.
class CopySheet : public QDialog, private CopyObserver {
  Q_OBJECT

 public:
  explicit CopySheet(QWidget* parent);
  ~CopySheet() override;

  /// Opens the sheet and begins; not called while it copies.
  void begin(const CopyRequest& request);
  bool isCopying() const { return thread_.joinable(); }
  /// Cancels without a question or a word, and waits until nothing is copied any more: the file
  /// that is being written is left at the next megabyte.
  void cancelAndWait();

 public Q_SLOTS:
  /// Escape and closing it cancel.
  void reject() override;

 Q_SIGNALS:
  /// How much is copied, in whole percent; -1 while nobody knows, and when the copy has ended.
  void percentChanged(int percent);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  // On the copying thread.
  void progressed(const CopyProgress& progress) override;
  std::optional<ConflictAnswer> ask(const CopyConflict& conflict) override;

  void showQuestion(const CopyConflict& conflict);
  void answer(std::optional<ConflictAnswer> answer, CopyQuestionScope scope);
  void showProgress();
  void end(const CopyOutcome& outcome);
  void closeQuestion();

  // All are children of this dialog.
  ElidedLabel* nameField_;
  QLabel* amountField_;
  QLabel* remainingField_;
  QProgressBar* progressBar_;
  RoomyButton* cancelButton_;
  QTimer* refresh_;
  QDialog* question_ = nullptr;

  RemainingTime remainingTime_;
  std::optional<ConflictAnswer> answerForAll_;  // The copying thread's.

  std::mutex mutex_;  // Guards what follows.
  std::condition_variable_any answered_;
  CopyProgress progress_;
  bool hasAnswer_ = false;
  std::optional<ConflictAnswer> answer_;
  CopyQuestionScope scope_ = CopyQuestionScope::This;

  std::stop_source stop_;
  std::thread thread_;
  int run_ = 0;  // Tells one copy's end from the next one's.
};

}  // namespace kelvane

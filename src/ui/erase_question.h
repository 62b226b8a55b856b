// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <optional>
#include <string>

class QDialog;

namespace kelvane {

class DRDevice;
class MediaController;

/// The question whether to erase the selected disc, while it stands over the window. Its answer
/// means whichever disc is selected then, so it goes by itself, unanswered, where that has become
/// another one; and what had been selected before it is selected again behind it. Main thread only.
class EraseQuestion : public QObject {
 public:
  /// Borrows the list, which outlives it.
  explicit EraseQuestion(MediaController& discs, QObject* parent);

  /// Follows `question`, which has just been put about the selected disc. `rowBefore` was selected
  /// before.
  void follow(QDialog* question, std::optional<size_t> rowBefore);

  /// To be called after each change of the list or of the selection. A list that is being made anew
  /// may be empty for a moment, so the question goes once the event loop is reached.
  void discsHaveChanged();

 private:
  struct Disc {
    const DRDevice* drive = nullptr;
    std::string identity;
  };

  static bool isSame(const Disc& one, const Disc& other);
  std::optional<Disc> discInRow(std::optional<size_t> row) const;
  bool meansTheSameDisc() const;
  void withdrawWhereItMeansAnother();
  void giveSelectionBack();

  MediaController& discs_;
  QPointer<QDialog> question_;
  std::optional<Disc> asked_;
  std::optional<size_t> rowBefore_;
  std::optional<Disc> discBefore_;
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QFrame>
#include <vector>

#include "ui/burn_summary.h"

class QFormLayout;
class QLabel;

namespace kelvane {

/// What a burn will change, in the confirmation sheet: items added, replaced, moved and deleted,
/// and what becomes of the disc's free space. It says that it is still looking until there is
/// something to tell.
class ChangeSummaryView : public QFrame {
  Q_OBJECT

 public:
  explicit ChangeSummaryView(QWidget* parent = nullptr);

  void setSummary(const BurnSummary& summary);

 private:
  struct Row {
    QLabel* label;
    QLabel* value;
  };

  Row makeRow(const char* name, const char* key);
  void show(const Row& row, const QString& text);

  // All are children of this widget.
  QFormLayout* rows_;
  QLabel* looking_;
  Row added_;
  Row replaced_;
  Row renamed_;
  Row deleted_;
  Row needed_;
  Row left_;
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QTemporaryDir>

class QDialog;

namespace kelvane {
class MainWindow;
}

namespace kelvane::testing {

/// A copy of two files between folders of its own that has come half way, to a name that is taken,
/// and stands at the question about it. It goes on standing there until the window ends it.
class SampleCopy {
 public:
  SampleCopy();

  /// Begins to copy, and gives the question once that and the progress so far are shown.
  QDialog* begin(MainWindow& window);

 private:
  QTemporaryDir from_;
  QTemporaryDir to_;
};

}  // namespace kelvane::testing

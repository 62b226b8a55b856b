// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>
#include <string>

class QTextBrowser;

namespace kelvane {

/// A view of the licence agreement, as HTML without a style of its own: sizes follow the platform's
/// font, colours its palette. The parent owns it.
QTextBrowser* makeLicenseTextView(QWidget* parent);

/// The licence agreement for whoever wants to read it again: a window that asks nothing.
class LicenseReader : public QDialog {
  Q_OBJECT

 public:
  explicit LicenseReader(QWidget* parent);

  /// Shows the window with this text, from its beginning.
  void present(const std::string& html);

 private:
  QTextBrowser* licenseTextView_;  // A child of this dialog.
};

}  // namespace kelvane

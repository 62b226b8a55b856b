// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>
#include <QEventLoop>

#include "services/license_window.h"

class QLayout;
class QTextBrowser;

namespace kelvane {

class RoomyButton;

/// The window of the licence agreement. Escape and closing it count as "Disagree", Return as
/// "Agree"; arrow and page keys scroll the text.
class AgreementWindow : public QDialog, public LicenseWindow {
  Q_OBJECT

 public:
  explicit AgreementWindow(QWidget* parent = nullptr);

  void setActions(LicenseActions* actions) override { actions_ = actions; }
  void setLicenseText(const std::string& html) override;
  void runModal() override;
  void stopModal() override;
  void orderOut() override;

  /// Where the window is shown, brings it to the front.
  void makeKeyAndOrderFront();

 public Q_SLOTS:
  void reject() override;

 private:
  QLayout* makeButtons();

  LicenseActions* actions_ = nullptr;
  QEventLoop modalSession_;
  // All are children of this dialog.
  QTextBrowser* licenseTextView_;
  RoomyButton* agreeButton_ = nullptr;
  RoomyButton* disagreeButton_ = nullptr;
};

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/agreement_window.h"

#include <QHBoxLayout>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "ui/license_reader.h"
#include "ui/roomy_button.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kTextHeight = 380;

}  // namespace

AgreementWindow::AgreementWindow(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("licenseWindow"));
  setWindowModality(Qt::ApplicationModal);
  setWindowTitle(localizedText("LicenseTitle"));
  setAccessibleName(windowTitle());

  licenseTextView_ = makeLicenseTextView(this);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 16, 16, 14);
  layout->setSpacing(14);
  layout->addWidget(licenseTextView_, 1);
  layout->addLayout(makeButtons());
  resize(0, toPixels(kTextHeight, font()) + layout->minimumSize().height() -
                licenseTextView_->minimumHeight());
}

QLayout* AgreementWindow::makeButtons() {
  agreeButton_ = makeButton("agreeButton", "LicenseAgree", this);
  agreeButton_->setDefault(true);
  disagreeButton_ = makeButton("disagreeButton", "LicenseDisagree", this);
  connect(agreeButton_, &RoomyButton::clicked, this, [this] {
    if (actions_) actions_->agree();
  });
  connect(disagreeButton_, &RoomyButton::clicked, this, &AgreementWindow::reject);

  auto* row = new QHBoxLayout;
  row->addStretch();
  row->addWidget(disagreeButton_);
  row->addWidget(agreeButton_);
  return row;
}

void AgreementWindow::setLicenseText(const std::string& html) {
  licenseTextView_->setHtml(QString::fromStdString(html));
}

void AgreementWindow::runModal() {
  show();
  raise();
  activateWindow();
  licenseTextView_->setFocus();
  modalSession_.exec(QEventLoop::DialogExec);
}

void AgreementWindow::stopModal() {
  modalSession_.quit();
}

void AgreementWindow::orderOut() {
  hide();
}

void AgreementWindow::makeKeyAndOrderFront() {
  if (!isVisible()) return;
  setWindowState(windowState() & ~Qt::WindowMinimized);
  raise();
  activateWindow();
}

// The application that quits now asks its windows to close, and goes on where one stays.
void AgreementWindow::reject() {
  if (actions_) actions_->disagree();
  hide();
  modalSession_.quit();
}

}  // namespace kelvane

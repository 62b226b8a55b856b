// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/license_reader.h"

#include <QHBoxLayout>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>

#include "ui/roomy_button.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kTextWidth = 480;
constexpr double kTextHeight = 380;
constexpr double kSmallestTextHeight = 160;
constexpr int kTextMargin = 14;

constexpr const char* kStyleSheet =
    "h1 { font-size: large; margin-top: 0px; margin-bottom: 10px; }"
    "h2 { font-size: medium; margin-top: 14px; margin-bottom: 4px; }"
    "p { margin-top: 0px; margin-bottom: 8px; }"
    "ul { margin-top: 0px; margin-bottom: 0px; }"
    "li { margin-bottom: 4px; }";

}  // namespace

QTextBrowser* makeLicenseTextView(QWidget* parent) {
  auto* view = new QTextBrowser(parent);
  view->setObjectName(QStringLiteral("licenseTextView"));
  view->setAccessibleName(localizedText("LicenseTitle"));
  view->setOpenExternalLinks(true);
  view->document()->setDefaultStyleSheet(QLatin1String(kStyleSheet));
  view->document()->setDocumentMargin(kTextMargin);
  view->setMinimumSize(toPixels(kTextWidth, parent->font()),
                       toPixels(kSmallestTextHeight, parent->font()));
  return view;
}

LicenseReader::LicenseReader(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("licenseReader"));
  setWindowTitle(localizedText("LicenseTitle"));
  setAccessibleName(windowTitle());
  licenseTextView_ = makeLicenseTextView(this);
  RoomyButton* close = makeButton("closeButton", "PreferencesClose", this);
  close->setDefault(true);
  connect(close, &RoomyButton::clicked, this, &LicenseReader::close);

  auto* row = new QHBoxLayout;
  row->addStretch();
  row->addWidget(close);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(16, 16, 16, 14);
  column->setSpacing(14);
  column->addWidget(licenseTextView_, 1);
  column->addLayout(row);
  resize(0, toPixels(kTextHeight, font()));
}

void LicenseReader::present(const std::string& html) {
  licenseTextView_->setHtml(QString::fromStdString(html));
  show();
  raise();
  activateWindow();
  licenseTextView_->setFocus();
}

}  // namespace kelvane

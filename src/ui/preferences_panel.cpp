// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/preferences_panel.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>

#include "platform/foundation/bundle.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/user_defaults.h"
#include "ui/roomy_button.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kTextWidth = 360;
constexpr const char* kUpdateCheckKey = "disableUpdateCheck";

QLabel* makeExplanation(const QString& text, int indent, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setMinimumWidth(toPixels(kTextWidth, parent->font()));
  label->setIndent(indent);
  return label;
}

/// Where the text of a check box begins.
int textIndent(const QWidget& box) {
  const QStyle& style = *box.style();
  return style.pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &box) +
         style.pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &box);
}

}  // namespace

PreferencesPanel::PreferencesPanel(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("prefsPanel"));
  setWindowTitle(localizedText("PreferencesTitle"));
  setAccessibleName(windowTitle());
  notStored_ = makeExplanation(localizedText("PreferencesNotStored"), 0, this);
  notStored_->setObjectName(QStringLiteral("preferencesNotStored"));
  notStored_->hide();

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(20, 20, 20, 16);
  column->setSpacing(14);
  column->addLayout(addSetting("autohide", "PreferenceAutohide", Checked::IsYes));
  column->addLayout(addSetting("noappledoublefiles", "PreferenceNoAppleDouble", Checked::IsYes));
  column->addLayout(addSetting(kUpdateCheckKey, "PreferenceUpdateCheck", Checked::IsNo));
  column->addWidget(notStored_);
  column->addLayout(makeFoot());
  column->setSizeConstraint(QLayout::SetFixedSize);
}

QLayout* PreferencesPanel::addSetting(const char* key, const char* textKey, Checked meaning) {
  const std::string longKey = std::string(textKey) + "Long";
  auto* box = new QCheckBox(localizedText(textKey), this);
  box->setObjectName(QLatin1String(key));
  auto* explanation = makeExplanation(localizedText(longKey), textIndent(*box), this);
  box->setAccessibleName(withoutMnemonicMark(box->text()));
  box->setAccessibleDescription(explanation->text());
  settings_.push_back({.key = key, .meaning = meaning, .box = box, .explanation = explanation});
  connect(box, &QCheckBox::toggled, this,
          [this, setting = settings_.back()](bool checked) { store(setting, checked); });

  auto* lines = new QVBoxLayout;
  lines->setSpacing(3);
  lines->addWidget(box);
  lines->addWidget(explanation);
  return lines;
}

QLayout* PreferencesPanel::makeFoot() {
  auto* version = new QLabel(this);
  version->setObjectName(QStringLiteral("versionField"));
  version->setTextFormat(Qt::PlainText);
  version->setText(QString::fromStdString(
      format(localizedString("PreferencesVersion"), Bundle::mainBundle().shortVersionString())));
  RoomyButton* license = makeButton("licenseButton", "PreferencesLicense", this);
  license->setAutoDefault(false);
  RoomyButton* close = makeButton("closeButton", "PreferencesClose", this);
  close->setDefault(true);
  connect(license, &RoomyButton::clicked, this, [this] {
    if (licenseWanted_) licenseWanted_();
  });
  connect(close, &RoomyButton::clicked, this, &PreferencesPanel::close);

  auto* row = new QHBoxLayout;
  row->setContentsMargins(0, 6, 0, 0);
  row->addWidget(version);
  row->addStretch();
  row->addWidget(license);
  row->addWidget(close);
  return row;
}

void PreferencesPanel::setUpdateChecks(UpdateChecks checks) {
  const bool made = checks == UpdateChecks::Made;
  for (const Setting& setting : settings_) {
    if (setting.key != kUpdateCheckKey) continue;
    setting.box->setEnabled(made);
    setting.explanation->setText(
        localizedText(made ? "PreferenceUpdateCheckLong" : "PreferenceNoUpdateCheckLong"));
    setting.box->setAccessibleDescription(setting.explanation->text());
  }
  read();
}

void PreferencesPanel::present() {
  read();
  notStored_->hide();
  show();
  setWindowState(windowState() & ~Qt::WindowMinimized);
  raise();
  activateWindow();
  settings_.front().box->setFocus(Qt::ActiveWindowFocusReason);
}

void PreferencesPanel::read() {
  for (const Setting& setting : settings_) {
    const QSignalBlocker silence(setting.box);
    const bool isYes = UserDefaults::standard().boolForKey(setting.key);
    const bool checked = isYes == (setting.meaning == Checked::IsYes);
    setting.box->setChecked(checked && setting.box->isEnabled());
  }
}

// A default that could not be stored is shown as it is, so that nobody relies on it.
void PreferencesPanel::store(const Setting& setting, bool checked) {
  const bool isYes = checked == (setting.meaning == Checked::IsYes);
  const bool stored = UserDefaults::standard().setBool(isYes, setting.key);
  notStored_->setVisible(!stored);
  if (!stored) read();
}

}  // namespace kelvane

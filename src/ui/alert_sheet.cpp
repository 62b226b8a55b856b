// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/alert_sheet.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>
#include <vector>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

// A detail up to this length is shown at once, a longer one when the user asks for it.
constexpr size_t kShortDetail = 200;

QMessageBox::Icon iconOf(Alert::Style style) {
  switch (style) {
    case Alert::Style::Informational:
      return QMessageBox::Information;
    case Alert::Style::Critical:
      return QMessageBox::Critical;
    case Alert::Style::Warning:
      break;
  }
  return QMessageBox::Warning;
}

void setTexts(QMessageBox& box, const Alert& alert) {
  box.setWindowTitle(QCoreApplication::applicationName());
  box.setTextFormat(Qt::PlainText);
  box.setText(localizedText(alert.messageKey));
  std::string informative =
      alert.informativeKey.empty() ? std::string() : localizedString(alert.informativeKey);
  if (!alert.detail.empty() && alert.detail.size() <= kShortDetail) {
    informative += "\n\n" + format(localizedString("AlertDetail"), alert.detail);
  } else if (!alert.detail.empty()) {
    box.setDetailedText(QString::fromStdString(alert.detail));
  }
  box.setInformativeText(QString::fromStdString(informative));
  box.setAccessibleName(box.text());
  box.setAccessibleDescription(box.informativeText());
}

/// Adds the buttons, in order; a choice of none is an "OK".
std::vector<QPushButton*> addButtons(QMessageBox& box, std::vector<std::string> keys) {
  if (keys.empty()) keys.emplace_back("OK");
  std::vector<QPushButton*> buttons;
  for (const std::string& key : keys) {
    const bool last = buttons.size() + 1 == keys.size();
    const auto role = last && !buttons.empty() ? QMessageBox::RejectRole : QMessageBox::AcceptRole;
    const QString text = localizedText(key);
    QPushButton* button = box.addButton(withoutMnemonic(text), role);
    button->setAccessibleName(text);
    button->setObjectName(QStringLiteral("alertButton%1").arg(buttons.size()));
    buttons.push_back(button);
  }
  return buttons;
}

}  // namespace

void openAlertSheet(QWidget* parent, const Alert& alert,
                    std::function<void(int returnCode)> didEnd) {
  auto* box = new QMessageBox(parent);
  box->setObjectName(QStringLiteral("alertSheet"));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowModality(Qt::WindowModal);
  box->setIcon(iconOf(alert.style));
  setTexts(*box, alert);
  const std::vector<QPushButton*> buttons = addButtons(*box, alert.buttonKeys);
  box->setEscapeButton(buttons.back());
  box->setDefaultButton(alert.style == Alert::Style::Warning ? buttons.back() : buttons.front());
  QObject::connect(box, &QMessageBox::finished, parent, [box, buttons, didEnd] {
    const auto clicked = std::find(buttons.begin(), buttons.end(), box->clickedButton());
    const auto index = clicked == buttons.end() ? buttons.size() - 1
                                                : static_cast<size_t>(clicked - buttons.begin());
    if (didEnd) didEnd(kAlertFirstButtonReturn + static_cast<int>(index));
  });
  box->open();
}

}  // namespace kelvane

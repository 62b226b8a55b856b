// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/alert_sheet.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QMessageBox>
#include <QSpacerItem>
#include <QStringList>
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/message_box_labels.h"
#include "ui/roomy_button.h"
#include "ui/shortened_text.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

// A program's output may be long; the log has all of it.
constexpr qsizetype kLongestDetail = 600;

constexpr double kWidth = 380;

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

QString informativeText(const Alert& alert) {
  QStringList paragraphs;
  if (!alert.informativeKey.empty()) paragraphs << localizedText(alert.informativeKey);
  const QString detail = shortened(QString::fromStdString(alert.detail).trimmed(), kLongestDetail);
  if (!detail.isEmpty()) {
    paragraphs << QString::fromStdString(
        format(localizedString("AlertDetail"), detail.toStdString()));
  }
  return paragraphs.join(QStringLiteral("\n\n"));
}

void setTexts(QMessageBox& box, const Alert& alert) {
  box.setWindowTitle(QGuiApplication::applicationDisplayName());
  box.setTextFormat(Qt::PlainText);
  box.setText(localizedText(alert.messageKey));
  box.setInformativeText(informativeText(alert));
  box.setAccessibleName(box.text());
  box.setAccessibleDescription(box.informativeText());
  adaptLabels(box);
}

/// Gives the box a width at which its texts have a good shape, below everything that it holds.
void widen(QMessageBox& box) {
  auto* grid = qobject_cast<QGridLayout*>(box.layout());
  if (!grid) return;
  auto* spacer = new QSpacerItem(toPixels(kWidth, box.font()), 0);
  grid->addItem(spacer, grid->rowCount(), 0, 1, grid->columnCount());
}

/// Adds the buttons, in order; a choice of none is an "OK".
std::vector<QPushButton*> addButtons(QMessageBox& box, std::vector<std::string> keys) {
  if (keys.empty()) keys.emplace_back("OK");
  std::vector<QPushButton*> buttons;
  for (const std::string& key : keys) {
    const bool last = buttons.size() + 1 == keys.size();
    const auto role = last && !buttons.empty() ? QMessageBox::RejectRole : QMessageBox::AcceptRole;
    const std::string name = "alertButton" + std::to_string(buttons.size());
    RoomyButton* button = makeButton(name.c_str(), key, &box);
    box.addButton(button, role);
    buttons.push_back(button);
  }
  return buttons;
}

/// Fills an empty box, and gives its buttons in order.
std::vector<QPushButton*> fill(QMessageBox& box, const Alert& alert) {
  box.setIcon(iconOf(alert.style));
  setTexts(box, alert);
  std::vector<QPushButton*> buttons = addButtons(box, alert.buttonKeys);
  box.setEscapeButton(buttons.back());
  box.setDefaultButton(alert.style == Alert::Style::Warning ? buttons.back() : buttons.front());
  widen(box);
  return buttons;
}

/// Which button ended the box.
int returnCodeOf(const QMessageBox& box, const std::vector<QPushButton*>& buttons) {
  const auto clicked = std::find(buttons.begin(), buttons.end(), box.clickedButton());
  const auto index = clicked == buttons.end() ? buttons.size() - 1
                                              : static_cast<size_t>(clicked - buttons.begin());
  return kAlertFirstButtonReturn + static_cast<int>(index);
}

}  // namespace

QDialog* openAlertSheet(QWidget* parent, const Alert& alert,
                        std::function<void(int returnCode)> didEnd) {
  auto* box = new QMessageBox(parent);
  box->setObjectName(QStringLiteral("alertSheet"));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowModality(Qt::WindowModal);
  const std::vector<QPushButton*> buttons = fill(*box, alert);
  QObject::connect(box, &QMessageBox::finished, parent, [box, buttons, didEnd = std::move(didEnd)] {
    if (didEnd) didEnd(returnCodeOf(*box, buttons));
  });
  box->open();
  return box;
}

int runAlertModal(QWidget* parent, const Alert& alert) {
  QMessageBox box(parent);
  box.setObjectName(QStringLiteral("alertPanel"));
  box.setWindowModality(Qt::ApplicationModal);
  const std::vector<QPushButton*> buttons = fill(box, alert);
  box.exec();
  return returnCodeOf(box, buttons);
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/copy_question.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QMessageBox>
#include <map>
#include <utility>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/message_box_labels.h"
#include "ui/roomy_button.h"
#include "ui/shortened_text.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

void setTexts(QMessageBox& box, const CopyConflict& conflict) {
  const std::string name = shortenedName(QString::fromStdString(conflict.name)).toStdString();
  box.setWindowTitle(QGuiApplication::applicationDisplayName());
  box.setIcon(QMessageBox::Question);
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(format(localizedString("CopyTaken"), name)));
  box.setInformativeText(
      localizedText(conflict.canReplace ? "CopyTakenLong" : "CopyTakenByFolder"));
  box.setAccessibleName(box.text());
  box.setAccessibleDescription(box.informativeText());
  adaptLabels(box);
}

}  // namespace

QDialog* openCopyQuestion(
    QWidget* parent, const CopyConflict& conflict,
    std::function<void(std::optional<ConflictAnswer> answer, CopyQuestionScope scope)> answered) {
  auto* box = new QMessageBox(parent);
  box->setObjectName(QStringLiteral("copyQuestion"));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowModality(Qt::WindowModal);
  setTexts(*box, conflict);
  auto* forAll = new QCheckBox(localizedText("CopyForAll"), box);
  forAll->setObjectName(QStringLiteral("copyForAll"));
  forAll->setAccessibleName(withoutMnemonicMark(forAll->text()));
  box->setCheckBox(forAll);

  std::map<QAbstractButton*, std::optional<ConflictAnswer>> answers;
  const auto add = [&](const char* name, const char* key, std::optional<ConflictAnswer> answer,
                       QMessageBox::ButtonRole role) {
    RoomyButton* button = makeButton(name, key, box);
    box->addButton(button, role);
    answers[button] = answer;
    return button;
  };
  if (conflict.canReplace) {
    add("copyReplace", "CopyReplace", ConflictAnswer::Replace, QMessageBox::AcceptRole);
  }
  // Of all answers, this one loses nothing.
  box->setDefaultButton(
      add("copyKeepBoth", "CopyKeepBoth", ConflictAnswer::KeepBoth, QMessageBox::AcceptRole));
  add("copySkip", "CopySkip", ConflictAnswer::Skip, QMessageBox::AcceptRole);
  box->setEscapeButton(add("copyCancelAll", "Cancel", std::nullopt, QMessageBox::RejectRole));

  QObject::connect(
      box, &QMessageBox::finished, parent, [box, forAll, answers, answered = std::move(answered)] {
        const auto clicked = answers.find(box->clickedButton());
        const auto scope = forAll->isChecked() ? CopyQuestionScope::All : CopyQuestionScope::This;
        answered(clicked == answers.end() ? std::nullopt : clicked->second, scope);
      });
  box->open();
  return box;
}

}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/insert_disc_button.h"

#include <QMenu>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/view_parts.h"

namespace kelvane {

InsertDiscButton::InsertDiscButton(QWidget* parent) : RoomyButton(parent) {
  setObjectName(QStringLiteral("insertDiscButton"));
  setCaption(localizedText("InsertDisc"));
  setAccessibleDescription(localizedText("InsertDiscLong"));
  setToolTip(localizedText("InsertDiscLong"));
  connect(this, &QPushButton::clicked, this, [this] {
    if (single_) insertDisc(0);
  });
}

void InsertDiscButton::setDiscs(const std::vector<std::string>& names,
                                std::function<void(size_t index)> insert) {
  insert_ = std::move(insert);
  hasDiscs_ = !names.empty();
  single_ = names.size() == 1;
  // One of its entries may be what is being carried out.
  if (QMenu* old = menu()) old->deleteLater();
  setMenu(nullptr);
  if (names.size() < 2) return;

  auto* discs = new QMenu(this);
  for (size_t index = 0; index < names.size(); ++index) {
    const std::string text = format(localizedString("InsertDiscNamed"), names[index]);
    discs->addAction(withoutMnemonic(QString::fromStdString(text)), this,
                     [this, index] { insertDisc(index); });
  }
  setMenu(discs);
}

void InsertDiscButton::insertDisc(size_t index) {
  const auto insert = insert_;  // It may offer other discs, which replaces `insert_`.
  if (insert) insert(index);
}

}  // namespace kelvane

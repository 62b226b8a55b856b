// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/file_chooser.h"

#include <QFile>
#include <QFileDialog>
#include <utility>

#include "ui/view_parts.h"

namespace kelvane {

void chooseForDisc(QWidget& parent, Choice choice,
                   std::function<void(const std::vector<std::string>& paths)> chosen) {
  const bool isFolder = choice == Choice::Folder;
  auto* chooser =
      new QFileDialog(&parent, localizedText(isFolder ? "ChooseFolder" : "ChooseFiles"));
  chooser->setObjectName(QStringLiteral("fileChooser"));
  chooser->setAttribute(Qt::WA_DeleteOnClose);
  chooser->setWindowModality(Qt::WindowModal);
  chooser->setFileMode(isFolder ? QFileDialog::Directory : QFileDialog::ExistingFiles);
  chooser->setOption(QFileDialog::ShowDirsOnly, isFolder);
  chooser->setLabelText(QFileDialog::Accept, localizedText("ChooseAdd"));
  QObject::connect(chooser, &QFileDialog::filesSelected, &parent,
                   [chosen = std::move(chosen)](const QStringList& selected) {
                     std::vector<std::string> paths;
                     for (const QString& path : selected) {
                       paths.push_back(QFile::encodeName(path).toStdString());
                     }
                     chosen(paths);
                   });
  chooser->open();
}

}  // namespace kelvane

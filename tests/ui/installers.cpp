// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/installers.h"

#include <gtest/gtest.h>

#include <QFile>

namespace kelvane::testing {

Installers::Installers() : path_(qgetenv("PATH")) {}

Installers::~Installers() {
  qputenv("PATH", path_);
}

void Installers::provide(const QStringList& programs) {
  for (const QString& name : programs) {
    QFile program(folder_.filePath(name));
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\necho \"${0##*/} $*\" >>\"" + QFile::encodeName(note()) + "\"\n");
    program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }
  qputenv("PATH", QFile::encodeName(folder_.path()));
}

std::string Installers::noted() const {
  QFile file(note());
  return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

}  // namespace kelvane::testing

// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <string>

namespace kelvane::testing {

/// Installers of packages that only note how they were called. While it lives, it decides which
/// there are.
class Installers {
 public:
  Installers();
  ~Installers();
  Installers(const Installers&) = delete;
  Installers& operator=(const Installers&) = delete;

  /// From now on these are the only programs that are found by their names.
  void provide(const QStringList& programs);
  /// Their calls, each a line.
  std::string noted() const;

 private:
  QString note() const { return folder_.filePath(QStringLiteral("note")); }

  const QByteArray path_;
  QTemporaryDir folder_;
};

}  // namespace kelvane::testing

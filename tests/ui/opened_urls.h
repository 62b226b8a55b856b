// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>
#include <QUrl>
#include <string>
#include <vector>

namespace kelvane::testing {

/// Takes the place of the desktop for the URLs of one scheme while it lives.
class OpenedUrls : public QObject {
  Q_OBJECT

 public:
  explicit OpenedUrls(const QString& scheme);
  ~OpenedUrls() override;

  /// What was opened, in order: the path of a file, and of everything else the whole address.
  std::vector<std::string> addresses;

 public Q_SLOTS:
  void note(const QUrl& url);

 private:
  const QString scheme_;
};

}  // namespace kelvane::testing

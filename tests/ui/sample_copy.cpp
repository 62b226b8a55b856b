// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/sample_copy.h"

#include <QCoreApplication>
#include <QDialog>
#include <QEventLoop>
#include <QFile>
#include <QProgressBar>

#include "ui/copy_job.h"
#include "ui/main_window.h"

namespace kelvane::testing {
namespace {

constexpr qint64 kFileSize = 1'500'000;
constexpr const char* kFirst = "/A film.mkv";
constexpr const char* kTaken = "/Report 2019.odt";

void write(const QString& path, qint64 size) {
  QFile file(path);
  if (file.open(QIODevice::WriteOnly)) file.resize(size);
}

QDialog* questionOver(const MainWindow& window) {
  for (QDialog* question : window.findChildren<QDialog*>(QStringLiteral("copyQuestion"))) {
    if (question->isVisible()) return question;
  }
  return nullptr;
}

}  // namespace

SampleCopy::SampleCopy() {
  for (const char* name : {kFirst, kTaken}) write(from_.path() + QLatin1String(name), kFileSize);
  write(to_.path() + QLatin1String(kTaken), 0);
}

QDialog* SampleCopy::begin(MainWindow& window) {
  const std::string folder = from_.path().toStdString();
  window.beginCopySheet({{folder + kFirst, folder + kTaken}, to_.path().toStdString(), {}});
  const auto* bar = window.findChild<QProgressBar*>(QStringLiteral("copyProgressIndicator"));
  QDialog* question = nullptr;
  while (question == nullptr || bar->value() <= 0) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    question = questionOver(window);
  }
  return question;
}

}  // namespace kelvane::testing

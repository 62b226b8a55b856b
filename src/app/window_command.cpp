// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/window_command.h"

#include <CLI/CLI.hpp>
#include <QApplication>
#include <QMessageBox>
#include <cstdio>
#include <utility>

#include "app/window_session.h"
#include "platform/desktop/running_instance.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

constexpr int kUsageStatus = 2;
constexpr int kCannotStartStatus = 3;

int cannotStart(const std::string& reason) {
  std::fprintf(stderr, "kelvanefs: %s\n", reason.c_str());
  QMessageBox::critical(nullptr, QStringLiteral("KelvaneFS"), QString::fromStdString(reason));
  return kCannotStartStatus;
}

}  // namespace

int runWindowCommand(int argc, char** argv) {
  std::vector<std::string> discs;
  CLI::App app(
      "Changes the contents of open multisession discs, and writes the changes back to them.");
  app.add_option("--drive", discs, "A disc for an emulated drive; may be given several times")
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.set_version_flag("--version", Bundle::mainBundle().shortVersionString());
  app.footer(
      "kelvanefs batch --help tells how to change discs from scripts, "
      "kelvanefs erase --help how to erase them.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& problem) {
    return app.exit(problem) == 0 ? 0 : kUsageStatus;
  }
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("kelvanefs"));
  // By its entry the desktop knows which icon the windows have.
  QApplication::setDesktopFileName(QStringLiteral("kelvanefs"));
  QApplication::setApplicationDisplayName(QStringLiteral("KelvaneFS"));
  QApplication::setQuitOnLastWindowClosed(false);
  loadStringsTable();
  std::string error;
  auto core = ApplicationCore::create(discs, DriveRegistry::RealDrives::Included, &error);
  if (!core) {
    // Who starts the application again wants its window.
    if (desktop::showRunningInstance()) return 0;
    return cannotStart(error);
  }
  ControllerServices services = systemControllerServices(core->visibleMounts());
  WindowSession session(std::move(core), std::move(services));
  performOnMainThread([&session] { session.start(); });
  return QApplication::exec();
}

}  // namespace kelvane

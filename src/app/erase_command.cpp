// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/erase_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "app/application_core.h"
#include "app/controller_services.h"
#include "app/erase_run.h"
#include "app/kv_controller.h"
#include "app/terminal_words.h"
#include "app/termination_signals.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

struct EraseOptions {
  std::string drive;
  bool yes = false;
  bool json = false;
};

void declareOptions(CLI::App& app, EraseOptions& options) {
  app.description(
      "Erases a rewritable disc, so that it can be written from its beginning again.\n\n"
      "  kelvanefs erase --drive DRIVE [--yes] [--json]");
  app.footer(
      "Says what is on the disc and asks before it is erased.\n"
      "Exit status: 0 erased; 1 the answer was not yes; 2 wrong usage, or nobody to ask; 3 there "
      "is no disc that can be erased, or it is in use;\n"
      "4 erasing failed; 128 plus the signal's number if interrupted before.");
  app.add_option("--drive", options.drive,
                 "The drive, such as /dev/sr0, or DISC.kvdisc, the disc for an emulated one")
      ->required();
  app.add_flag("--yes", options.yes, "Erase without asking");
  app.add_flag("--json", options.json, "Write one JSON object on standard output at the end");
}

void printOutcome(const EraseOutcome& outcome) {
  nlohmann::json object = {{"state", outcome.state}, {"error", nullptr}};
  if (!outcome.error.empty()) object["error"] = outcome.error;
  std::printf("%s\n",
              object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

EraseOutcome eraseOnDrive(const EraseOptions& options) {
  std::string error;
  const auto core =
      ApplicationCore::create({options.drive}, DriveRegistry::RealDrives::Excluded, &error);
  if (!core) {
    say("Nothing has been erased: %@", error);
    return {"not-erasable", error, static_cast<int>(EraseExit::NotErasable)};
  }
  EraseRun run(options.yes ? EraseRun::Confirmation::Given : EraseRun::Confirmation::Asked);
  const ControllerServices services = systemControllerServices(core->visibleMounts());
  KVController controller(run, services);
  controller.setSingleDisc(KVController::SingleDisc::Listed);
  const TerminationSignals signals([&run](int signalNumber) { run.interrupt(signalNumber); });
  run.start(controller);
  controller.awakeFromNib();
  controller.initialiseController();
  QCoreApplication::exec();
  return run.outcome();
}

}  // namespace

int runEraseCommand(int argc, char** argv) {
  EraseOptions options;
  CLI::App app;
  declareOptions(app, options);
  try {
    app.parse(argc - 1, argv + 1);
  } catch (const CLI::ParseError& problem) {
    return app.exit(problem) == 0 ? 0 : static_cast<int>(EraseExit::Usage);
  }
  if (!options.yes && isatty(STDIN_FILENO) == 0) {
    say("Nothing has been erased: there is no terminal to ask on. With --yes nobody is asked.");
    return static_cast<int>(EraseExit::Usage);
  }
  QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("kelvanefs"));
  loadStringsTable();
  const EraseOutcome outcome = eraseOnDrive(options);
  if (options.json) printOutcome(outcome);
  return outcome.exitStatus;
}

}  // namespace kelvane

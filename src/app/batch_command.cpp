// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/batch_command.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "app/application_core.h"
#include "app/batch_run.h"
#include "app/controller_services.h"
#include "app/kv_app_delegate.h"
#include "app/kv_controller.h"
#include "app/termination_signals.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

// A volume identifier has 32 bytes (ECMA-119 8.4.7).
constexpr size_t kLongestVolumeName = 32;

void declareOptions(CLI::App& app, BatchOptions& options) {
  app.description(
      "Opens a disc as a writable volume, runs a command on it, closes it and burns the "
      "changes.\n\n"
      "  kelvanefs batch --drive DRIVE [--name VOLUME] [--speed N] [--discard] [--json] -- "
      "COMMAND [ARG…]");
  app.footer(
      "COMMAND runs with the volume as its working directory; KELVANEFS_VOLUME holds its path.\n"
      "Exit status: 0 burned, nothing to burn, or discarded as asked; COMMAND's own status where "
      "it failed (127 where it cannot\n"
      "be run), and the changes are discarded; 2 wrong usage; 3 the disc could not be opened;\n"
      "4 the burn failed or the disc was gone before; 128 plus the signal's number if "
      "interrupted.");
  app.add_option("--drive", options.drives,
                 "A drive such as /dev/sr0, or DISC.kvdisc, the disc for an emulated one; may be "
                 "given several times")
      ->required()
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_option("--name", options.name, "The volume name of the new session")
      ->check([](const std::string& name) {
        const bool fits = !name.empty() && name.size() <= kLongestVolumeName;
        return fits ? std::string() : std::string("a volume name has 1 to 32 bytes");
      });
  app.add_option("--speed", options.speedTag, "The burn speed as a multiple of 1x; 0: the fastest")
      ->check(CLI::Range(0, 99));
  app.add_flag("--discard", options.discard, "Throw the changes away instead of burning them");
  app.add_flag("--json", options.json, "Write one JSON object on standard output at the end");
  app.add_option("command", options.command, "The command and its arguments, after --")->required();
}

nlohmann::json jsonOf(const BurnSummary::Items& items) {
  return {{"files", items.files}, {"folders", items.folders}};
}

// A number that is not to be relied on is left out.
nlohmann::json jsonOf(const std::optional<BurnSummary::Bytes>& bytes) {
  if (!bytes || bytes->certainty != BurnSummary::Certainty::Exact) return nullptr;
  return bytes->bytes;
}

nlohmann::json jsonOf(const BurnSummary& summary) {
  const BurnSummary::Changes changes = summary.changes.value_or(BurnSummary::Changes());
  nlohmann::json object = {{"added", jsonOf(changes.added)},
                           {"replaced", jsonOf(changes.replaced)},
                           {"renamed", jsonOf(changes.renamed)},
                           {"deleted", jsonOf(changes.deleted)},
                           {"bytes_needed", jsonOf(summary.needed)},
                           {"bytes_free_afterwards", jsonOf(summary.freeAfterwards)},
                           {"hidden_too", summary.hiddenToo},
                           {"shown_still", summary.shownStill},
                           {"problem", nullptr}};
  if (!summary.problem.empty()) object["problem"] = summary.problem;
  return object;
}

void printOutcome(const BatchOutcome& outcome) {
  nlohmann::json object = {{"state", outcome.state}, {"session", nullptr}, {"bytes", nullptr},
                           {"error", nullptr},       {"warning", nullptr}, {"summary", nullptr}};
  if (outcome.state == "burned" && outcome.session) object["session"] = *outcome.session;
  if (outcome.state == "burned" && outcome.bytes) object["bytes"] = *outcome.bytes;
  if (!outcome.error.empty()) object["error"] = outcome.error;
  if (!outcome.warning.empty()) object["warning"] = outcome.warning;
  if (outcome.summary) object["summary"] = jsonOf(*outcome.summary);
  std::printf("%s\n",
              object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

BatchOutcome runOnDrives(const BatchOptions& options) {
  std::string error;
  const auto core =
      ApplicationCore::create(options.drives, DriveRegistry::RealDrives::Excluded, &error);
  if (!core) {
    std::fprintf(stderr, "The disc could not be opened: %s\n", error.c_str());
    BatchOutcome outcome;
    outcome.state = "not-opened";
    outcome.error = error;
    outcome.exitStatus = static_cast<int>(BatchExit::NotOpened);
    return outcome;
  }
  BatchRun run(options);
  const ControllerServices services = systemControllerServices(core->visibleMounts());
  KVController controller(run, services);
  KVAppDelegate delegate(controller, run);
  const TerminationSignals signals([&run](int signalNumber) { run.interrupt(signalNumber); });
  run.start(controller);
  controller.awakeFromNib();
  delegate.applicationDidFinishLaunching();
  QCoreApplication::exec();
  return run.outcome();
}

}  // namespace

int runBatchCommand(int argc, char** argv) {
  BatchOptions options;
  CLI::App app;
  declareOptions(app, options);
  try {
    app.parse(argc - 1, argv + 1);
  } catch (const CLI::ParseError& problem) {
    return app.exit(problem) == 0 ? 0 : static_cast<int>(BatchExit::Usage);
  }
  QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("kelvanefs"));
  loadStringsTable();
  const BatchOutcome outcome = runOnDrives(options);
  if (options.json) printOutcome(outcome);
  return outcome.exitStatus;
}

}  // namespace kelvane

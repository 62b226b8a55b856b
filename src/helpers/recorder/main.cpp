// SPDX-License-Identifier: GPL-2.0-or-later
//
// recorder: writes one image to the disc in one drive, or erases that disc, and reports on standard
// output (reporter.h). Exit status 0: it is done. 1: it is not. 2: wrong arguments.
//
// A recording cannot be taken back, so nothing that ends the application may end it: the program
// leaves its starter's session and takes no notice of the signals that are sent to whole sessions.
// A file that may grow no further (SIGXFSZ) is an error of the write that hits it.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>

#include "helpers/recorder/erase_job.h"
#include "helpers/recorder/recording_job.h"
#include "helpers/recorder/reporter.h"

namespace {

using namespace kelvane::recorder;

void outliveTheApplication() {
  // Fails where the starter has given us a session already.
  setsid();
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT, SIGXFSZ}) {
    std::signal(number, SIG_IGN);
  }
}

void declareOptions(CLI::App& arguments, RecordingOrder& order, bool& erases) {
  arguments.add_option("--device", order.devicePath, "The drive's device node")->required();
  CLI::Option_group* task = arguments.add_option_group("task", "One of these");
  task->add_option("--image", order.imagePath, "The file to be written");
  task->add_flag("--erase", erases, "Erase the disc, which must be rewritable");
  task->require_option(1);
  arguments.add_option("--lock", order.lockPath, "A file to be locked meanwhile");
  arguments.add_option("--speed", order.speed, "Kilobytes (1000 bytes) a second")
      ->check(CLI::PositiveNumber);
  arguments.add_flag("--appendable", order.appendable, "Leave the disc open");
  arguments.add_flag(
      "--no-underrun-protection", [&order](int64_t) { order.underrunProtection = false; },
      "Do not let the drive pause when data is late");
}

JobOutcome carryOut(const RecordingOrder& order, bool erases) {
  Reporter reporter;
  if (erases) {
    return EraseJob({.devicePath = order.devicePath, .lockPath = order.lockPath}, reporter).run();
  }
  return RecordingJob(order, reporter).run();
}

int run(int argc, char** argv) {
  RecordingOrder order;
  bool erases = false;
  CLI::App arguments("Writes an image to a disc as a new session, or erases the disc.", "recorder");
  declareOptions(arguments, order, erases);
  constexpr int kWrongArguments = 2;
  try {
    arguments.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return arguments.exit(error) == 0 ? 0 : kWrongArguments;
  }
  outliveTheApplication();
  return carryOut(order, erases) == JobOutcome::Done ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "recorder: %s\n", failure.what());
    return 1;
  }
}

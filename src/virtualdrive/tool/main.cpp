// SPDX-License-Identifier: GPL-2.0-or-later
// kelvanedisc: makes discs for the optical burner in software, and looks into them.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>

#include "virtualdrive/shim_environment.h"
#include "virtualdrive/tool/commands.h"

namespace kelvane::virtualdrive::tool {

void complain(const std::string& sentence) {
  std::fprintf(stderr, "kelvanedisc: %s\n", sentence.c_str());
}

std::optional<VirtualDrive> openDisc(const std::filesystem::path& disc) {
  std::string error;
  auto drive = VirtualDrive::open(disc, &error);
  if (!drive) complain(error);
  return drive;
}

namespace {

constexpr const char* kFooter =
    "Exit status: 0 done, 1 failed, 2 wrong usage, 3 the disc cannot be used. run gives the\n"
    "command's own status, 126 where it cannot be executed and 127 where it is not found.";

/// What the command line says.
struct Arguments {
  std::filesystem::path disc;
  CreateOptions create;
  InfoForm infoForm = InfoForm::Text;
  EjectManner ejectManner = EjectManner::Button;
  std::optional<int> session;
  std::filesystem::path target;
  std::string device = kDefaultShownDevice;
  /// What follows "--".
  std::vector<std::string> command;
};

CLI::App* addCommand(CLI::App& app, Arguments& arguments, const char* name, const char* purpose) {
  auto* command = app.add_subcommand(name, purpose);
  command->add_option("PATH", arguments.disc, "The disc's folder, NAME.kvdisc")->required();
  return command;
}

void addCreate(CLI::App& app, Arguments& arguments) {
  auto* create = addCommand(app, arguments, "create", "Makes a disc. PATH must not exist.");
  auto& options = arguments.create;
  create
      ->add_option("--media", options.medium,
                   "cd-r, cd-rw, dvd-r, dvd-rw, dvd-rw-ro (a dvd-rw that is formatted for\n"
                   "restricted overwrite), dvd+rw or dvd+r")
      ->required()
      ->check(CLI::IsMember(
          {"cd-r", "cd-rw", "dvd-r", "dvd-rw", kRestrictedOverwriteName, "dvd+rw", "dvd+r"}));
  create->add_option("--capacity", options.capacityMegabytes,
                     "What it holds, in MB of 1048576 bytes");
  auto* from =
      create->add_option("--from", options.from, "Folder whose content becomes the first session");
  create->add_option("--label", options.label, "Name of the volume")->needs(from);
  auto* audio = create->add_option(
      "--audio", options.audio,
      "Files of sound, each an audio track of a CD: 44,100 samples of two channels a second,\n"
      "16 bits, little-endian, without a header. They come behind the data, in its session.");
  create
      ->add_flag_callback(
          "--audio-session", [&] { options.audioPlace = AudioPlace::OwnSession; },
          "Audio in a session of its own, before the data's")
      ->needs(from)
      ->needs(audio);
  create->add_flag("--closed", options.closed, "Nothing can be added to the CD. Needs content.");
}

void addSession(CLI::App* command, Arguments& arguments) {
  command->add_option("--session", arguments.session, "Session, from 1; the last one by default")
      ->check(CLI::PositiveNumber);
}

void addCommands(CLI::App& app, Arguments& arguments) {
  addCreate(app, arguments);
  addCommand(app, arguments, "info", "Shows medium, sessions, tracks and free space.")
      ->add_flag_callback(
          "--json", [&] { arguments.infoForm = InfoForm::Json; }, "As one JSON object");
  addSession(addCommand(app, arguments, "ls", "Lists the files of a session."), arguments);
  auto* extract = addCommand(app, arguments, "extract", "Copies the files of a session to DIR.");
  extract->add_option("DIR", arguments.target, "Folder, made where it is missing")->required();
  addSession(extract, arguments);
  auto* run = addCommand(app, arguments, "run",
                         "Runs a program with the disc in a drive before it: run PATH -- COMMAND…\n"
                         "KELVANEDISC_DEVICE tells it the drive's path. A disc that is ejected is "
                         "inserted first.");
  run->add_option("--device", arguments.device, "The drive's path, /dev/sr0 to /dev/sr31")
      ->capture_default_str();
  addCommand(app, arguments, "insert", "Closes the tray.");
  addCommand(app, arguments, "eject", "Opens the tray.")
      ->add_flag_callback(
          "--force", [&] { arguments.ejectManner = EjectManner::Needle; },
          "Also where a program has locked it");
}

int carryOut(const CLI::App& app, Arguments& arguments) {
  const auto name = app.get_subcommands().front()->get_name();
  arguments.create.disc = arguments.disc;
  if (name == "create") return createDisc(arguments.create);
  if (name == "info") return printInfo(arguments.disc, arguments.infoForm);
  if (name == "ls") return listFiles(arguments.disc, arguments.session);
  if (name == "extract") return extractFiles(arguments.disc, arguments.target, arguments.session);
  if (name == "insert") return moveTray(arguments.disc, Tray::Insert, EjectManner::Button);
  if (name == "eject") return moveTray(arguments.disc, Tray::Eject, arguments.ejectManner);
  if (arguments.command.empty()) {
    complain("run needs a command: kelvanedisc run PATH -- COMMAND…");
    return kWrongUsage;
  }
  return runWithDisc(arguments.disc, arguments.device, arguments.command);
}

}  // namespace

/// Parses the words of the command line and does what they say.
int runTool(std::vector<std::string> words) {
  Arguments arguments;
  // The command of run is taken off first: what looks like an option in it is none of ours.
  const auto separator = std::ranges::find(words, "--");
  if (separator != words.end()) arguments.command.assign(separator + 1, words.end());
  words.erase(separator, words.end());
  std::ranges::reverse(words);

  CLI::App app("Makes discs for the emulated optical drive and looks into them.", "kelvanedisc");
  app.require_subcommand(1);
  app.footer(kFooter);
  addCommands(app, arguments);
  try {
    app.parse(words);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  return carryOut(app, arguments);
}

}  // namespace kelvane::virtualdrive::tool

int main(int count, char** words) {
  namespace tool = kelvane::virtualdrive::tool;
  // The standard library and CLI11 throw where memory, paths or the options' definition fail them.
  try {
    return tool::runTool({words + 1, words + count});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kelvanedisc: %s\n", error.what());
  } catch (...) {
    std::fputs("kelvanedisc: failed for an unknown reason.\n", stderr);
  }
  return tool::kFailed;
}

// SPDX-License-Identifier: GPL-2.0-or-later
// growisofs: runs the distribution's writer of DVD sessions, with the drive after "-Z" or "-M"
// given as that writer can open it. The image builder that MKISOFS names is passed on as
// GENISOIMAGE, the variable that the distribution's build reads. Everything else is passed on
// unchanged.
//
// What keeps the writer from being started is told as it tells an error of its own: on standard
// error, in a line that begins with ":-(". The exit status is then 127.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "helpers/launchers/device_argument.h"
#include "helpers/launchers/drive_access.h"
#include "helpers/launchers/program_search.h"

namespace {

using namespace kelvane::launchers;

int complain(const std::string& problem) {
  std::fprintf(stderr, ":-( %s\n", problem.c_str());
  return kProgramMissing;
}

void nameImageBuilder() {
  const char* builder = std::getenv("MKISOFS");
  if (builder != nullptr) setenv("GENISOIMAGE", builder, 1);
}

}  // namespace

int main(int argc, char** argv) {
  const char* searchPath = std::getenv("PATH");
  const auto program =
      findProgram({"growisofs"}, searchPath == nullptr ? "" : searchPath, "/proc/self/exe");
  if (!program) return complain("growisofs is not installed");
  std::vector<std::string> arguments(argv + 1, argv + argc);
  std::string* drive = findArgumentAfter({"-Z", "-M"}, arguments);
  if (drive == nullptr) return complain("no drive is named after -Z or -M");
  std::string problem;
  const auto access =
      accessToDrive(*drive, kelvane::emulatedDrivesOfEnvironment(), ownFolder(), &problem);
  if (!access || !prepareToWrite(*access, &problem)) return complain(problem);
  *drive = access->path;
  nameImageBuilder();
  arguments.insert(arguments.begin(), *program);
  return replaceByProgram(*program, arguments);
}

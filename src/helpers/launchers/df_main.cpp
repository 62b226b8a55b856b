// SPDX-License-Identifier: GPL-2.0-or-later
// df: runs the distribution's DVD formatter, with the drive that the last argument names given as
// that formatter can open it. It has nothing to do with the program of the same name that tells the
// free space of file systems, and never leads there. Everything else is passed on unchanged. 127,
// with a line on standard error, where the formatter cannot be started.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "helpers/launchers/drive_access.h"
#include "helpers/launchers/program_search.h"

namespace {

using namespace kelvane::launchers;

int complain(const std::string& problem) {
  std::fprintf(stderr, "df: %s\n", problem.c_str());
  return kProgramMissing;
}

}  // namespace

int main(int argc, char** argv) {
  const char* searchPath = std::getenv("PATH");
  const auto program =
      findProgram({"dvd+rw-format"}, searchPath == nullptr ? "" : searchPath, "/proc/self/exe");
  if (!program) return complain("dvd+rw-format is not installed");
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.empty()) return complain("no drive is named");
  std::string problem;
  const auto access = accessToDrive(arguments.back(), kelvane::emulatedDrivesOfEnvironment(),
                                    ownFolder(), &problem);
  if (!access || !prepareToWrite(*access, &problem)) return complain(problem);
  arguments.back() = access->path;
  arguments.insert(arguments.begin(), *program);
  return replaceByProgram(*program, arguments);
}

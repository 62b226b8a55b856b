// SPDX-License-Identifier: GPL-2.0-or-later
// mkisofs: runs the distribution's builder of ISO-9660 images, with the drive after "-M" given as
// that builder can open it. Everything else is passed on unchanged, input, output, environment and
// exit status among it. 127 where no builder is installed.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "helpers/launchers/device_argument.h"
#include "helpers/launchers/program_search.h"

int main(int argc, char** argv) {
  using namespace kelvane::launchers;
  const char* searchPath = std::getenv("PATH");
  const auto program = findProgram({"genisoimage", "mkisofs"},
                                   searchPath == nullptr ? "" : searchPath, "/proc/self/exe");
  if (!program) {
    std::fputs("mkisofs: neither genisoimage nor mkisofs is installed\n", stderr);
    return kProgramMissing;
  }
  std::vector<std::string> arguments(argv + 1, argv + argc);
  resolveDeviceAfter("-M", kelvane::emulatedDrivesOfEnvironment(), arguments);
  arguments.insert(arguments.begin(), *program);
  return replaceByProgram(*program, arguments);
}

// SPDX-License-Identifier: GPL-2.0-or-later
#include <string_view>

#include "app/batch_command.h"
#include "app/window_command.h"

int main(int argc, char** argv) {
  if (argc > 1 && std::string_view(argv[1]) == "batch") return kelvane::runBatchCommand(argc, argv);
  return kelvane::runWindowCommand(argc, argv);
}

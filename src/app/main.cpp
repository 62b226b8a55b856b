// SPDX-License-Identifier: GPL-2.0-or-later
#include <csignal>
#include <string_view>

#include "app/batch_command.h"
#include "app/erase_command.h"
#include "app/window_command.h"
#include "platform/foundation/descriptor_limit.h"

int main(int argc, char** argv) {
  // Whoever stops reading what is said here must not end a burn by that.
  std::signal(SIGPIPE, SIG_IGN);
  kelvane::raiseDescriptorLimit();
  const std::string_view command = argc > 1 ? argv[1] : "";
  if (command == "batch") return kelvane::runBatchCommand(argc, argv);
  if (command == "erase") return kelvane::runEraseCommand(argc, argv);
  return kelvane::runWindowCommand(argc, argv);
}

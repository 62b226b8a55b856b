// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

#include "tool_fixture.h"

namespace kelvane::virtualdrive {

/// Discs that are burned by programs of libburn, with the waiting taken out of these.
class LibburnTest : public ToolTest {
 protected:
  Finished cdrskin(const std::vector<std::string>& arguments) {
    return runWith({"cdrskin", "-v", "dev=/dev/sr0"}, arguments);
  }
  Finished xorriso(const std::vector<std::string>& arguments) {
    return runWith({"xorriso"}, arguments);
  }

 private:
  Finished runWith(std::vector<std::string> command, const std::vector<std::string>& arguments) {
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runImpatiently(command);
  }
};

}  // namespace kelvane::virtualdrive

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/system_log.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvane {
namespace {

TEST(SystemLog, WritesOneLineToStandardError) {
  testing::internal::CaptureStderr();
  systemLog("unmount attempt %i", -47);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "kelvanefs: unmount attempt -47\n");
}

TEST(SystemLog, ALineFeedInAValueDoesNotBreakTheLine) {
  std::vector<std::string> lines;
  const SystemLogRedirection redirection([&](const std::string& line) { lines.push_back(line); });
  systemLog("Error! Openfile did not find file! %@", "/a\nb");
  EXPECT_EQ(lines, std::vector<std::string>{"Error! Openfile did not find file! /a\\nb"});
}

TEST(SystemLog, AfterARedirectionLinesGoToStandardErrorAgain) {
  {
    const SystemLogRedirection redirection([](const std::string&) {});
  }
  testing::internal::CaptureStderr();
  systemLog("back");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "kelvanefs: back\n");
}

}  // namespace
}  // namespace kelvane

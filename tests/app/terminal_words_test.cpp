// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/terminal_words.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(TerminalWords, AnAlertIsTheCauseWhereItIsKnownAndElseTheAdvice) {
  Alert alert;
  alert.messageKey = "EraseVolumeBusy";
  alert.informativeKey = "EraseVolumeBusyLong";
  EXPECT_EQ(asLine(alert), "EraseVolumeBusy. EraseVolumeBusyLong");
  alert.detail = "bash (process 7) uses /Volumes/A.";
  EXPECT_EQ(asLine(alert), "EraseVolumeBusy: bash (process 7) uses /Volumes/A.");
}

TEST(TerminalWords, ANameFromADiscCannotCommandTheTerminal) {
  EXPECT_EQ(printable("a\x1b[2Jb\nc\x7f"), "a?[2Jb?c?");
  EXPECT_EQ(printable("Grüße"), "Grüße");
}

}  // namespace
}  // namespace kelvane

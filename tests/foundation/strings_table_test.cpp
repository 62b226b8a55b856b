// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/strings_table.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(StringsTable, AKeyStandsForItselfWhereThereIsNoTable) {
  EXPECT_EQ(localizedString("ReasonRunning"), "ReasonRunning");
}

TEST(StringsTable, TheEnglishWordsStandWhereThereIsNoTable) {
  EXPECT_EQ(localizedString("ReasonNoNode", "There is no %@."), "There is no %@.");
}

}  // namespace
}  // namespace kelvane

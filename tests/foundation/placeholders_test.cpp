// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/placeholders.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(Placeholders, AreFilledFromLeftToRight) {
  EXPECT_EQ(format("%@ in %@", "CDRW", "Drive"), "CDRW in Drive");
  EXPECT_EQ(format("/tmp/%i", -5), "/tmp/-5");
}

TEST(Placeholders, AValueIsNotSearchedForPlaceholders) {
  EXPECT_EQ(format("%@ and %@", "%@", "b"), "%@ and b");
}

TEST(Placeholders, WithoutAValueStayAsTheyAre) {
  EXPECT_EQ(format("100% of %@ and %@", "a"), "100% of a and %@");
  EXPECT_EQ(format("%"), "%");
}

TEST(Placeholders, AValueWithoutAPlaceholderIsDropped) {
  EXPECT_EQ(format("text", "a"), "text");
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/hide_pattern.h"

#include <gtest/gtest.h>

namespace kelvane::tests {
namespace {

TEST(HidePattern, ReplacesEachOfTheEightCharacters) {
  EXPECT_EQ(hidePattern("/tmp/812/äöüß{}[]"), "/tmp/812/********");
}

TEST(HidePattern, ReplacesEitherCase) {
  EXPECT_EQ(hidePattern("ÄÖÜẞ"), "****");
}

TEST(HidePattern, ReplacesADecomposedFormAsAWhole) {
  EXPECT_EQ(hidePattern("Mu\u0308ller"), "M*ller");
  EXPECT_EQ(hidePattern("a\u0308o\u0308u\u0308A\u0308O\u0308U\u0308"), "******");
}

TEST(HidePattern, LeavesPlainLettersAndOtherMarksAlone) {
  EXPECT_EQ(hidePattern("aouAOU ss e\u0308 a\u0301 é ñ"), "aouAOU ss e\u0308 a\u0301 é ñ");
}

TEST(HidePattern, EscapesNothingElse) {
  EXPECT_EQ(hidePattern("/a*b?c\\d\n e"), "/a*b?c\\d\n e");
}

TEST(HidePattern, PassesInvalidUtf8Through) {
  EXPECT_EQ(hidePattern("\xff\xc3[\xcc\x88\xc3"), "\xff\xc3*\xcc\x88\xc3");
}

TEST(HidePattern, AppliesToTheWholePath) {
  EXPECT_EQ(hidePattern("/tmp/[x]/Müller[1].txt"), "/tmp/*x*/M*ller*1*.txt");
}

TEST(HidePattern, AnEmptyPathStaysEmpty) {
  EXPECT_EQ(hidePattern(""), "");
}

}  // namespace
}  // namespace kelvane::tests

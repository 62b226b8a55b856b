// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/cd_name_formatter.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

bool accepts(const QString& typed) {
  return CDNameFormatter().isPartialStringValid(typed, typed.size());
}

TEST(CDNameFormatter, Takes16CharactersAndRefusesThe17th) {
  EXPECT_TRUE(accepts(QString(16, 'x')));
  EXPECT_FALSE(accepts(QString(17, 'x')));
}

TEST(CDNameFormatter, TakesLettersDigitsAndAFewSigns) {
  for (const QChar sign : QStringLiteral("azAZ09_ -.+")) EXPECT_TRUE(accepts(QString("a") + sign));
  for (const QChar sign : QStringLiteral("/:*?äß\"\n&")) {
    EXPECT_FALSE(accepts(QString("a") + sign)) << int{sign.unicode()};
  }
}

TEST(CDNameFormatter, TakesTheseSignsOfAllThatCanBeTypedAndNoOther) {
  const QString taken =
      QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890_ -.+");
  for (ushort code = 0; code < 0x300; ++code) {
    EXPECT_EQ(accepts(QString("a") + QChar(code)), taken.contains(QChar(code))) << code;
  }
}

TEST(CDNameFormatter, EmptyStringIsValid) {
  EXPECT_TRUE(accepts(QString()));
}

TEST(CDNameFormatter, TestsOnlyTheCharacterBeforeTheCaret) {
  EXPECT_TRUE(CDNameFormatter().isPartialStringValid("pa/ste/d", 2));
  EXPECT_FALSE(CDNameFormatter().isPartialStringValid("ab/cd", 3));
  EXPECT_TRUE(CDNameFormatter().isPartialStringValid("ab/cd", 5));
}

TEST(CDNameFormatter, EmptyValueIsShownAsAStandIn) {
  EXPECT_EQ(CDNameFormatter().stringForObjectValue(""), "my CDROM");
  EXPECT_EQ(CDNameFormatter().stringForObjectValue("Holiday"), "Holiday");
  EXPECT_EQ(CDNameFormatter().stringForObjectValue(" "), " ");
}

TEST(CDNameFormatter, EmptyStringBecomesABlank) {
  EXPECT_EQ(CDNameFormatter().objectValueForString(""), " ");
  EXPECT_EQ(CDNameFormatter().objectValueForString("my CDROM"), "my CDROM");
}

}  // namespace
}  // namespace kelvane

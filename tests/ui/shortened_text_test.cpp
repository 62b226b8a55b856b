// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/shortened_text.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

const QString kEllipsis = QStringLiteral("…");

TEST(ShortenedText, IsTheTextWhereThatFits) {
  EXPECT_EQ(shortened(QStringLiteral("name"), 4), QStringLiteral("name"));
  EXPECT_EQ(shortened(QString(), 4), QString());
}

TEST(ShortenedText, IsTheBeginningOfALongerOne) {
  EXPECT_EQ(shortened(QStringLiteral("names"), 4), QStringLiteral("name") + kEllipsis);
  EXPECT_EQ(shortened(QStringLiteral("names"), 0), kEllipsis);
}

TEST(ShortenedText, NeverEndsInTheMiddleOfACharacter) {
  const QString discs = QStringLiteral("💿💿💿");  // Two units each.
  EXPECT_EQ(shortened(discs, 4), QStringLiteral("💿💿") + kEllipsis);
  EXPECT_EQ(shortened(discs, 3), QStringLiteral("💿") + kEllipsis);
  EXPECT_EQ(shortened(discs, 1), kEllipsis);
}

TEST(ShortenedText, OfANameIsMeasuredInCharactersAndNotInTheirBytes) {
  const QString name(60, QChar(0x6f22));
  EXPECT_EQ(shortenedName(name), name);
  EXPECT_EQ(shortenedName(name + name), name + kEllipsis);
}

}  // namespace
}  // namespace kelvane

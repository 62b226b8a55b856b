// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/volume_identifier.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(VolumeIdentifier, IsTheNameWhereThatIsShortEnough) {
  for (const std::string name : {"", "NAME", "Müll & more", "12345678901234567890123456789012"}) {
    EXPECT_EQ(volumeIdentifierOf(name), name);
  }
}

TEST(VolumeIdentifier, OfALongerNameIsItsFirst32Bytes) {
  EXPECT_EQ(volumeIdentifierOf("12345678901234567890123456789012 1"),
            "12345678901234567890123456789012");
}

TEST(VolumeIdentifier, CutsNoCharacterInTwo) {
  std::string name = "x";
  for (int count = 0; count < 16; ++count) name += "ü";
  EXPECT_EQ(volumeIdentifierOf(name), name.substr(0, 31));
  std::string wide;
  for (int count = 0; count < 16; ++count) wide += "漢";
  EXPECT_EQ(volumeIdentifierOf(wide), wide.substr(0, 30));
}

TEST(VolumeIdentifier, OfAnythingElseThanTextIsShortEnoughToo) {
  EXPECT_LE(volumeIdentifierOf(std::string(100, '\x80')).size(), 32U);
  EXPECT_EQ(volumeIdentifierOf(std::string(100, '\xFF')).size(), 32U);
}

}  // namespace
}  // namespace kelvane

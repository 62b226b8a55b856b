// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/iso_names.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvane::isovolume {
namespace {

std::string plain(std::string_view identifier) {
  std::string name;
  plainName({reinterpret_cast<const std::uint8_t*>(identifier.data()), identifier.size()}, &name);
  return name;
}

std::string joliet(std::u16string_view text) {
  std::vector<std::uint8_t> bytes;
  for (const char16_t unit : text) {
    bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
  }
  std::string name;
  jolietName(bytes, &name);
  return name;
}

TEST(PlainName, IsLowerCaseWithoutItsFirstVersion) {
  EXPECT_EQ(plain("README.TXT;1"), "readme.txt");
  EXPECT_EQ(plain("MAKEFILE.;1"), "makefile");
  EXPECT_EQ(plain("DIRECTORY"), "directory");
}

TEST(PlainName, KeepsOtherVersionsBehindADot) {
  EXPECT_EQ(plain("README.TXT;2"), "readme.txt.2");
  EXPECT_EQ(plain("A.;12"), "a..12");
}

TEST(JolietName, IsUtf8OfEveryCharacter) {
  EXPECT_EQ(joliet(u"Gr\u00F6\u00DFe \u20AC.txt;1"),
            "Gr\xC3\xB6\xC3\x9F"
            "e \xE2\x82\xAC.txt");
  EXPECT_EQ(joliet(u"\U0001F4BF"), "\xF0\x9F\x92\xBF");
}

TEST(JolietName, HalfASurrogatePairIsAReplacementCharacter) {
  const char16_t lone[] = {0xD83D, u'x', 0};
  EXPECT_EQ(joliet(lone), "\xEF\xBF\xBDx");
}

TEST(JolietName, LosesDotsAtItsEnd) {
  EXPECT_EQ(joliet(u"name..;1"), "name");
}

TEST(LimitName, CutsInFrontOfTheCharacterThatDoesNotFit) {
  std::string name(254, 'a');
  name += "\xC3\xB6";
  limitName(&name);
  EXPECT_EQ(name, std::string(254, 'a'));
  name = std::string(255, 'a');
  limitName(&name);
  EXPECT_EQ(name.size(), 255u);
  name = std::string(300, '\x80');
  limitName(&name);
  EXPECT_EQ(name.size(), 255u);
}

TEST(PermittedName, RefusesWhatAPathWouldReadOtherwise) {
  for (const std::string_view name :
       {std::string_view(""), std::string_view("."), std::string_view(".."),
        std::string_view("a/b"), std::string_view("/"), std::string_view("a\0b", 3)}) {
    EXPECT_FALSE(isPermittedName(name)) << name;
  }
  EXPECT_TRUE(isPermittedName("..."));
  EXPECT_TRUE(isPermittedName(" a\nb"));
}

}  // namespace
}  // namespace kelvane::isovolume

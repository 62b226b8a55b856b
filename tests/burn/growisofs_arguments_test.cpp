// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/growisofs_arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvane {
namespace {

using ::testing::ElementsAre;

DVDBurnParameters parametersFor(const std::string& burntoemptydisk, int32_t burnSpeed) {
  DVDBurnParameters parameters;
  parameters.dvdvolumename = "Holiday 2026";
  parameters.bsddevicepath = "/dev/rkv0";
  parameters.sourcepath = "/tmp/812";
  parameters.burntoemptydisk = burntoemptydisk;
  parameters.overburn = "NO";
  parameters.hideFilePath = "/tmp/.812.hide";
  parameters.burnSpeed = burnSpeed;
  return parameters;
}

TEST(GrowisofsArgumentsTest, ASessionIsAppendedWithTheHideListsAndWithoutASpeed) {
  EXPECT_THAT(growisofsArguments(parametersFor("NO", 0)),
              ElementsAre("-overburn", "-M", "/dev/rkv0", "-hide-list", "/tmp/.812.hide",
                          "-hide-joliet-list", "/tmp/.812.hide", "-joliet-long", "-D", "-J", "-r",
                          "-input-charset", "utf-8", "-use-the-force-luke=tty", "-V",
                          "Holiday 2026", "/tmp/812"));
}

TEST(GrowisofsArgumentsTest, ABlankDiscGetsTheSameWithAFirstSession) {
  std::vector<std::string> expected = growisofsArguments(parametersFor("NO", 0));
  expected[1] = "-Z";
  EXPECT_EQ(growisofsArguments(parametersFor("YES", 0)), expected);
}

TEST(GrowisofsArgumentsTest, OnlyTheExactYesStandsForABlankDisc) {
  EXPECT_EQ(growisofsArguments(parametersFor("yes", 0))[1], "-M");
}

TEST(GrowisofsArgumentsTest, ASpeedComesFirst) {
  std::vector<std::string> expected = growisofsArguments(parametersFor("NO", 0));
  expected.insert(expected.begin(), "-speed=4");
  EXPECT_EQ(growisofsArguments(parametersFor("NO", 4)), expected);
}

TEST(GrowisofsArgumentsTest, TheWishNotToOverburnIsNotRead) {
  DVDBurnParameters parameters = parametersFor("NO", 0);
  parameters.overburn = "YES";
  EXPECT_EQ(growisofsArguments(parameters), growisofsArguments(parametersFor("NO", 0)));
}

TEST(GrowisofsArgumentsTest, NamesArePassedAsTheyAre) {
  DVDBurnParameters parameters = parametersFor("NO", 0);
  parameters.dvdvolumename = "-M";
  parameters.sourcepath = "/tmp/with space %@ \xC3\xA4";
  const std::vector<std::string> arguments = growisofsArguments(parameters);
  EXPECT_EQ(arguments[arguments.size() - 2], "-M");
  EXPECT_EQ(arguments.back(), parameters.sourcepath);
}

}  // namespace
}  // namespace kelvane

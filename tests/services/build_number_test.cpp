// SPDX-License-Identifier: GPL-2.0-or-later
// Which build number an answer of the version endpoint stands for.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "services/update_check.h"

namespace kelvane {
namespace {

TEST(BuildNumber, IsTheAnswersDecimalInteger) {
  EXPECT_EQ(buildNumberOf("1600"), 1600);
  EXPECT_EQ(buildNumberOf("1601"), 1601);
  EXPECT_EQ(buildNumberOf("2000"), 2000);
  EXPECT_EQ(buildNumberOf("0001601"), 1601);
}

TEST(BuildNumber, EndsAtWhateverIsNoDigit) {
  EXPECT_EQ(buildNumberOf("1601\n"), 1601);
  EXPECT_EQ(buildNumberOf("1601\r\n2000"), 1601);
  EXPECT_EQ(buildNumberOf("1601.9"), 1601);
  EXPECT_EQ(buildNumberOf("16o1"), 16);
  EXPECT_EQ(buildNumberOf(std::string("1601\0garbage", 12)), 1601);
}

TEST(BuildNumber, IsZeroWhereTheAnswerDoesNotBeginWithOne) {
  for (const char* reply :
       {"", " ", "\n", "abc", "v1601", "<html>1601</html>", "x1601", "+1601", "-1601", "-",
        "\xEF\xBB\xBF"
        "1601"}) {
    EXPECT_EQ(buildNumberOf(reply), 0) << reply;
  }
}

TEST(BuildNumber, MayStandBehindWhiteSpace) {
  EXPECT_EQ(buildNumberOf(" \t\r\n1601"), 1601);
}

TEST(BuildNumber, IsZeroWhereAnythingInTheAnswerIsNotAscii) {
  EXPECT_EQ(buildNumberOf("1601 \xC3\xA9"), 0);
  EXPECT_EQ(buildNumberOf("1601\xFF"), 0);
}

TEST(BuildNumber, IsTheLargestWhereItDoesNotFit) {
  EXPECT_EQ(buildNumberOf("2147483647"), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(buildNumberOf("2147483648"), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(buildNumberOf(std::string(60'000, '9')), std::numeric_limits<int32_t>::max());
}

TEST(BuildNumber, OfThisBuildIsBelowTheThresholdOf1601) {
  EXPECT_EQ(kFirstNewerBuild, 1601);
}

}  // namespace
}  // namespace kelvane

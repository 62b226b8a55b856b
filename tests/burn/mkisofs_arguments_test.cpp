// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/mkisofs_arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvane {
namespace {

using ::testing::ElementsAre;

SessionImageRequest request(const std::string& sessionString) {
  return {.sessionString = sessionString,
          .volumeName = "My disc",
          .imagePath = "/tmp/812.iso",
          .hideListPath = "/tmp/.812.hide",
          .deviceName = "sr0",
          .tmpDirPath = "/tmp/812"};
}

TEST(MkisofsArguments, ForAFirstSessionNameNeitherADeviceNorAHideList) {
  EXPECT_THAT(mkisofsArguments(request("0")),
              ElementsAre("-quiet", "-D", "-r", "-J", "-joliet-long", "-input-charset", "utf-8",
                          "-V", "My disc", "-o", "/tmp/812.iso", "/tmp/812"));
}

TEST(MkisofsArguments, ForAFurtherSessionContinueTheLastOneAndHideWhatWasDeleted) {
  EXPECT_THAT(
      mkisofsArguments(request("0,11702")),
      ElementsAre("-hide-list", "/tmp/.812.hide", "-hide-joliet-list", "/tmp/.812.hide", "-quiet",
                  "-D", "-r", "-J", "-joliet-long", "-input-charset", "utf-8", "-V", "My disc",
                  "-o", "/tmp/812.iso", "-M", "sr0", "-C", "0,11702", "/tmp/812"));
}

TEST(MkisofsArguments, AnySessionStringButASingle0ContinuesASession) {
  EXPECT_EQ(mkisofsArguments(request("0,0")).size(), 20U);
  EXPECT_EQ(mkisofsArguments(request("11702")).size(), 20U);
  EXPECT_EQ(mkisofsArguments(request("0")).size(), 12U);
}

TEST(MkisofsArguments, AVolumeNameStaysOneArgumentWhateverItHolds) {
  SessionImageRequest odd = request("0");
  odd.volumeName = "-a \"b\" 'c' ä";
  EXPECT_EQ(mkisofsArguments(odd).at(8), odd.volumeName);
}

}  // namespace
}  // namespace kelvane

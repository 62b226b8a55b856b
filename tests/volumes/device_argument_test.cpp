// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/launchers/device_argument.h"

#include <gtest/gtest.h>

namespace kelvane::launchers {
namespace {

using Words = std::vector<std::string>;

Words resolved(Words arguments) {
  resolveDeviceAfter("-M", {{"kv0", "/discs/a.kvdisc"}}, arguments);
  return arguments;
}

TEST(DeviceArgumentTest, TheDriveAfterTheOptionBecomesWhatCanBeOpened) {
  EXPECT_EQ(resolved({"-o", "x", "-M", "kv0", "-C", "0,11702", "dir"}),
            (Words{"-o", "x", "-M", "/discs/a.kvdisc/sectors", "-C", "0,11702", "dir"}));
  EXPECT_EQ(resolved({"-M", "sr1/2"}), (Words{"-M", "/dev/sr1"}));
  EXPECT_EQ(resolved({"-M", "/dev/rkv0"}), (Words{"-M", "/discs/a.kvdisc/sectors"}));
}

TEST(DeviceArgumentTest, EverythingElseStaysAsItIs) {
  const Words cases[] = {{},
                         {"-M"},
                         {"kv0"},
                         {"-V", "kv0", "/discs/kv0"},
                         {"-M", "kv1"},
                         {"-M", "/dev/fd/7", "-C", "0,11702"},
                         {"-M", "/home/ann/image.iso"},
                         {"-M", ""}};
  for (const Words& words : cases) EXPECT_EQ(resolved(words), words);
}

TEST(DeviceArgumentTest, AVolumeNamedLikeTheOptionHidesNoDrive) {
  EXPECT_EQ(resolved({"-V", "-M", "-M", "kv0"}),
            (Words{"-V", "-M", "-M", "/discs/a.kvdisc/sectors"}));
}

TEST(DeviceArgumentTest, TheArgumentAfterAnyOfTheOptionsIsFound) {
  Words words = {"-overburn", "-M", "/dev/rkv0", "-V", "-Z", "/tmp/812"};
  EXPECT_EQ(findArgumentAfter({"-Z", "-M"}, words), &words[2]) << "the first to be met";
  EXPECT_EQ(findArgumentAfter({"-Z"}, words), &words[5]);
  EXPECT_EQ(findArgumentAfter({"-C"}, words), nullptr);
  words = {"-overburn", "-Z"};
  EXPECT_EQ(findArgumentAfter({"-Z", "-M"}, words), nullptr);
}

}  // namespace
}  // namespace kelvane::launchers

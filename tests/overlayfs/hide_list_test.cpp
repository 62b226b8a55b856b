// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/hide_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(HideList, KeepsOrderAndDuplicates) {
  HideList list;
  for (const char* path : {"/b", "/a", "/b", "/c"}) list.append(path);
  EXPECT_THAT(list.paths(), ElementsAre("/b", "/a", "/b", "/c"));
}

TEST(HideList, RemovesEveryOccurrenceAndLeavesTheRestInOrder) {
  HideList list;
  for (const char* path : {"/b", "/a", "/b", "/c", "/b"}) list.append(path);
  list.remove("/b");
  EXPECT_THAT(list.paths(), ElementsAre("/a", "/c"));
  EXPECT_FALSE(list.contains("/b"));
  EXPECT_TRUE(list.contains("/a"));
}

TEST(HideList, ContainsExactPathsOnly) {
  HideList list;
  list.append("/docs");
  EXPECT_TRUE(list.contains("/docs"));
  EXPECT_FALSE(list.contains("/docs/a"));
  EXPECT_FALSE(list.contains("/doc"));
  EXPECT_FALSE(list.contains("/Docs"));
}

TEST(HideList, RemovingWhatIsNotThereChangesNothing) {
  HideList list;
  list.append("/a");
  list.remove("/b");
  EXPECT_THAT(list.paths(), ElementsAre("/a"));
}

TEST(HideList, AHundredThousandPathsComeAndGo) {
  HideList list;
  const auto path = [](int number) { return "/some/directory/" + std::to_string(number); };
  for (int number = 0; number < 100000; ++number) list.append(path(number));
  for (int number = 0; number < 100000; ++number) ASSERT_TRUE(list.contains(path(number)));
  for (int number = 0; number < 100000; ++number) list.remove(path(number));
  EXPECT_THAT(list.paths(), IsEmpty());
}

}  // namespace
}  // namespace kelvane::tests

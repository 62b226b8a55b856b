// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/moved_items.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(MovedItems, KnowNoOriginOfWhatNeverMoved) {
  MovedItems items;
  EXPECT_EQ(items.originOf("/a"), std::nullopt);
  items.noteRename("/a", "/b");
  EXPECT_EQ(items.originOf("/b"), std::nullopt);
}

TEST(MovedItems, KnowWhereAFolderAndEverythingInItCameFrom) {
  MovedItems items;
  items.noteCopyUp("/docs", "/new/papers");
  EXPECT_EQ(items.originOf("/new/papers"), "/docs");
  EXPECT_EQ(items.originOf("/new/papers/deep/a.txt"), "/docs/deep/a.txt");
  EXPECT_EQ(items.originOf("/new"), std::nullopt);
  EXPECT_EQ(items.originOf("/new/papers2"), std::nullopt) << "another name that begins the same";
}

TEST(MovedItems, FollowFurtherRenamesOfTheItemOfItsFolderAndOfWhatIsInIt) {
  MovedItems items;
  items.noteCopyUp("/docs", "/papers");
  items.noteRename("/papers/a.txt", "/alone.txt");
  items.noteRename("/papers", "/other/papers");
  EXPECT_EQ(items.originOf("/alone.txt"), "/docs/a.txt");
  EXPECT_EQ(items.originOf("/other/papers/b.txt"), "/docs/b.txt");
  EXPECT_EQ(items.originOf("/other/papers/a.txt"), std::nullopt) << "it has left that folder";
  EXPECT_EQ(items.originOf("/papers/b.txt"), std::nullopt);
}

TEST(MovedItems, ForgetWhatWasChangedAndThatAlone) {
  MovedItems items;
  items.noteCopyUp("/docs", "/papers");
  items.noteChange("/papers/a.txt");
  EXPECT_EQ(items.originOf("/papers/a.txt"), std::nullopt);
  EXPECT_EQ(items.originOf("/papers/b.txt"), "/docs/b.txt");
  items.noteRename("/papers", "/letters");
  EXPECT_EQ(items.originOf("/letters/a.txt"), std::nullopt) << "also after a further rename";
}

TEST(MovedItems, ForgetWhatWasRemovedOrOverwrittenByARename) {
  MovedItems items;
  items.noteCopyUp("/docs", "/papers");
  items.noteRemoval("/papers/a.txt");
  EXPECT_EQ(items.originOf("/papers/a.txt"), std::nullopt);
  items.noteRename("/written.txt", "/papers/b.txt");
  EXPECT_EQ(items.originOf("/papers/b.txt"), std::nullopt);
  items.noteRemoval("/papers");
  EXPECT_EQ(items.originOf("/papers/c.txt"), std::nullopt);
  items.noteCopyUp("/more", "/papers");
  EXPECT_EQ(items.originOf("/papers/a.txt"), "/more/a.txt");
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// What is counted of a volume's changes, as a user would count them.
#include "overlayfs/change_count.h"

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

class ChangesOfAVolume : public DelegateTest {
 protected:
  void SetUp() override {
    trees.addDiscFile("/a.txt", "a");
    trees.addDiscFile("/docs/b.txt", "bb");
    trees.addDiscFile("/docs/deep/c.txt", "ccc");
    trees.addDiscFile("/docs/deep/d.txt", "dddd");
    makeDelegate();
  }

  ChangeCount count(AppleDouble appleDouble = AppleDouble::Burned) {
    delegate->willUnmount();
    const auto counted =
        countChanges(trees.overlay(), trees.disc(), delegate->changes(), appleDouble, {});
    EXPECT_TRUE(counted.has_value());
    return counted.value_or(ChangeCount());
  }

  void move(const std::string& from, const std::string& to) {
    PosixError error;
    ASSERT_TRUE(delegate->moveItemAtPath(from, to, &error)) << from;
  }
  void remove(const std::string& path) {
    ASSERT_TRUE(delegate->removeItemAtPath(path, nullptr)) << path;
  }
  void makeFolder(const std::string& path) {
    ASSERT_TRUE(delegate->createDirectoryAtPath(path, {}, nullptr)) << path;
  }
};

using Items = ItemCount;

TEST_F(ChangesOfAVolume, NothingChangedCountsNothing) {
  EXPECT_EQ(count(), ChangeCount());
}

TEST_F(ChangesOfAVolume, NewFilesAndFoldersAreAddedAndTheirContentIsNew) {
  create("/new.txt", std::string(3000, 'x'));
  makeFolder("/folder");
  create("/folder/inside.txt", "1");
  create("/docs/beside.txt");
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/link", "new.txt", nullptr));
  const ChangeCount counted = count();
  EXPECT_EQ(counted.added, (Items{4, 1})) << "the folder of the disc is none of them";
  EXPECT_EQ(counted.newBytes, 3001U);
  EXPECT_EQ(counted.contentBlocks, 3U) << "each file begins a block of its own";
  EXPECT_TRUE(counted.replaced.isZero() && counted.renamed.isZero() && counted.deleted.isZero());
}

TEST_F(ChangesOfAVolume, AFileWrittenOverOneOfTheDiscReplacesIt) {
  create("/a.txt", "new");
  create("/docs/tmp", "newer");
  move("/docs/tmp", "/docs/b.txt");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.replaced, (Items{2, 0}));
  EXPECT_TRUE(counted.added.isZero());
  EXPECT_EQ(counted.newBytes, 8U);
}

TEST_F(ChangesOfAVolume, AReplacementOfADeletedFileIsNoDeletion) {
  remove("/a.txt");
  create("/a.txt", "new");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.replaced, (Items{1, 0}));
  EXPECT_TRUE(counted.deleted.isZero());
}

TEST_F(ChangesOfAVolume, WhatStandsForDeletedItemsIsNotAdded) {
  remove("/a.txt");
  remove("/docs/deep/c.txt");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.deleted, (Items{2, 0}));
  EXPECT_TRUE(counted.added.isZero() && counted.replaced.isZero());
  EXPECT_EQ(counted.newBytes, 0U);
}

TEST_F(ChangesOfAVolume, ADeletedFolderCountsWithAllThatIsInItAndOnceHoweverItWasDeleted) {
  remove("/docs/deep/c.txt");
  remove("/docs/b.txt");
  remove("/docs");
  EXPECT_EQ(count().deleted, (Items{3, 2}));
}

TEST_F(ChangesOfAVolume, APathThatWasDeletedTwiceCountsOnce) {
  remove("/a.txt");
  create("/a.txt", "new");
  remove("/a.txt");
  EXPECT_EQ(count().deleted, (Items{1, 0}));
}

TEST_F(ChangesOfAVolume, AMovedFileIsRenamedAndNeitherAddedNorDeleted) {
  move("/a.txt", "/docs/z.txt");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.renamed, (Items{1, 0}));
  EXPECT_TRUE(counted.added.isZero() && counted.deleted.isZero());
  EXPECT_EQ(counted.newBytes, 1U) << "it is written once more";
}

TEST_F(ChangesOfAVolume, AMovedFolderIsRenamedWithAllThatIsInItThroughFurtherMoves) {
  move("/docs", "/papers");
  move("/papers/deep/c.txt", "/c.txt");
  makeFolder("/other");
  move("/papers", "/other/papers");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.renamed, (Items{3, 2}));
  EXPECT_EQ(counted.added, (Items{0, 1}));
  EXPECT_TRUE(counted.deleted.isZero());
}

TEST_F(ChangesOfAVolume, AMovedFileThatIsWrittenToIsDeletedAndAdded) {
  move("/a.txt", "/z.txt");
  std::unique_ptr<UserData> file;
  ASSERT_TRUE(delegate->openFileAtPath("/z.txt", 0, &file, nullptr));
  ASSERT_EQ(delegate->writeFileAtPath("/z.txt", file.get(), "x", 1, 0, nullptr), 1);
  move("/docs/b.txt", "/y.txt");
  AttributeChanges cut;
  cut.NSFileSize = 0;
  ASSERT_TRUE(delegate->setAttributes(cut, "/y.txt", nullptr, nullptr));
  const ChangeCount counted = count();
  EXPECT_EQ(counted.added, (Items{2, 0}));
  EXPECT_EQ(counted.deleted, (Items{2, 0}));
  EXPECT_TRUE(counted.renamed.isZero());
}

TEST_F(ChangesOfAVolume, AMovedFileOverAnotherReplacesThatAndIsGoneFromItsPlace) {
  move("/a.txt", "/docs/b.txt");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.replaced, (Items{1, 0}));
  EXPECT_EQ(counted.deleted, (Items{1, 0}));
}

TEST_F(ChangesOfAVolume, AMovedFileWhoseOldPlaceIsTakenIsAddedThere) {
  move("/a.txt", "/z.txt");
  create("/a.txt", "other");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.replaced, (Items{1, 0}));
  EXPECT_EQ(counted.added, (Items{1, 0}));
  EXPECT_TRUE(counted.renamed.isZero() && counted.deleted.isZero());
}

TEST_F(ChangesOfAVolume, AMovedFileThatIsDeletedAfterwardsIsDeleted) {
  move("/a.txt", "/z.txt");
  remove("/z.txt");
  const ChangeCount counted = count();
  EXPECT_EQ(counted.deleted, (Items{1, 0}));
  EXPECT_TRUE(counted.added.isZero() && counted.renamed.isZero());
}

TEST_F(ChangesOfAVolume, AFileMovedThereAndBackIsReplacedByItself) {
  move("/a.txt", "/z.txt");
  move("/z.txt", "/a.txt");
  EXPECT_EQ(count().replaced, (Items{1, 0}));
}

TEST_F(ChangesOfAVolume, CompanionFilesAreLeftOutWhereTheBurnDeletesThem) {
  create("/._new", "12345");
  makeFolder("/._folder");
  create("/._folder/inside", "1");
  create("/new", "1");
  EXPECT_EQ(count(AppleDouble::LeftOut).added, (Items{1, 0}));
  EXPECT_EQ(count(AppleDouble::Burned).added, (Items{3, 1}));
}

TEST_F(ChangesOfAVolume, WithoutADiscEverythingIsNew) {
  makeDelegateOver(std::nullopt, {700, 0});
  create("/a.txt", "new");
  delegate->willUnmount();
  const auto counted =
      countChanges(trees.overlay(), std::nullopt, delegate->changes(), AppleDouble::Burned, {});
  ASSERT_TRUE(counted.has_value());
  EXPECT_EQ(counted->added, (Items{1, 0}));
}

TEST_F(ChangesOfAVolume, ACountThatIsNotWantedAnyMoreGivesNone) {
  create("/a", "1");
  std::stop_source source;
  source.request_stop();
  EXPECT_EQ(countChanges(trees.overlay(), trees.disc(), delegate->changes(), AppleDouble::Burned,
                         source.get_token()),
            std::nullopt);
}

TEST_F(ChangesOfAVolume, CountingLeavesTreesAndListAsTheyAre) {
  remove("/a.txt");
  create("/new", "1");
  delegate->willUnmount();
  const std::string listing =
      "cd '" + trees.root() +
      "' && find . -printf '%p %s %T@ %C@ %i\\n' | sort && cat tmp/.812.hide";
  const std::string before = runShell(listing).output;
  countChanges(trees.overlay(), trees.disc(), delegate->changes(), AppleDouble::LeftOut, {});
  EXPECT_EQ(runShell(listing).output, before);
  EXPECT_NE(before.find("/812/new"), std::string::npos);
}

}  // namespace
}  // namespace kelvane::tests

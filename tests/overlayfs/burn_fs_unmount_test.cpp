// SPDX-License-Identifier: GPL-2.0-or-later
#include <unistd.h>

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BurnFSUnmount : public DelegateTest {
 protected:
  void removeAll(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
      ASSERT_TRUE(delegate->removeItemAtPath(path, nullptr)) << path;
    }
  }
  std::string hideList() const { return contentOf(trees.hideListFile()); }
};

TEST_F(BurnFSUnmount, WithoutDeletionsTheListIsWrittenEmptyAndTheHousekeepingGoes) {
  makeDelegate();
  create("/kept");
  create("/.TemporaryItems/x");
  create("/._.TemporaryItems");
  create("/.Trashes/501/x");
  create("/._.Trashes");
  delegate->willUnmount();
  EXPECT_EQ(hideList(), "");
  EXPECT_THAT(namesIn(trees.overlay()), ElementsAre("kept"));
}

TEST_F(BurnFSUnmount, EveryDeletedItemGetsAnEmptyPlaceholderAndALine) {
  trees.addDiscFile("/a.txt", "a");
  trees.addDiscFile("/b/c.txt", "c");
  makeDelegate();
  removeAll({"/a.txt", "/b/c.txt"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/a.txt") + "\n" + overlay("/b/c.txt"));
  EXPECT_THAT(namesIn(trees.overlay()), ElementsAre("a.txt", "b"));
  EXPECT_EQ(contentOf(overlay("/a.txt")), "");
  EXPECT_EQ(contentOf(overlay("/b/c.txt")), "");
}

TEST_F(BurnFSUnmount, ThePlaceholderBearsTheNameAndThePatternTheWildcards) {
  trees.addDiscFile("/Müller[1].txt", "x");
  trees.addDiscFile("/Mu\u0308ller[1].txt", "x");
  makeDelegate();
  removeAll({"/Müller[1].txt", "/Mu\u0308ller[1].txt"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/M*ller*1*.txt") + "\n" + overlay("/M*ller*1*.txt"));
  EXPECT_TRUE(exists(overlay("/Müller[1].txt")));
  EXPECT_TRUE(exists(overlay("/Mu\u0308ller[1].txt")));
}

// The placeholder of "/docs/a" would lie in the folder to which the link leads.
TEST_F(BurnFSUnmount, NothingBehindALinkIsTouchedThatStandsInTheDirectorysPlace) {
  trees.addDiscFile("/docs/deep/a", "old");
  makeDelegate();
  removeAll({"/docs/deep/a", "/docs/deep", "/docs"});
  create("/other/deep/a", "new");
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/docs", "/other", nullptr));
  ASSERT_TRUE(delegate->createDirectoryAtPath("/docs", {}, nullptr));  // Shows it again.
  delegate->willUnmount();
  EXPECT_EQ(contentOf(overlay("/other/deep/a")), "new");
  EXPECT_TRUE(S_ISLNK(statusOf(overlay("/docs")).st_mode));
  EXPECT_EQ(hideList(), overlay("/docs/deep/a") + "\n" + overlay("/docs/deep"));
  EXPECT_TRUE(delegate->hideListIsWhole());
}

TEST_F(BurnFSUnmount, ADeletedDirectoryBecomesAnEmptyFile) {
  trees.addDiscFile("/docs/a", "x");
  makeDelegate();
  removeAll({"/docs"});
  delegate->willUnmount();
  EXPECT_TRUE(S_ISREG(statusOf(overlay("/docs")).st_mode));
  EXPECT_EQ(statusOf(overlay("/docs")).st_size, 0);
}

TEST_F(BurnFSUnmount, AFileAndThenItsDirectoryEndAsOneEmptyFileAndTwoLines) {
  trees.addDiscFile("/a/b", "x");
  makeDelegate();
  removeAll({"/a/b", "/a"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/a/b") + "\n" + overlay("/a"));
  EXPECT_TRUE(S_ISREG(statusOf(overlay("/a")).st_mode));
}

TEST_F(BurnFSUnmount, ADirectoryAndThenAFileOfItEndAsAnEmptyFileAndTwoLines) {
  trees.addDiscFile("/a/b", "x");
  makeDelegate();
  removeAll({"/a", "/a/b"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/a") + "\n" + overlay("/a/b"));
  EXPECT_TRUE(S_ISREG(statusOf(overlay("/a")).st_mode));
}

TEST_F(BurnFSUnmount, DuplicatesAreKeptInTheirPlaces) {
  trees.addDiscFile("/a", "x");
  trees.addDiscFile("/b", "x");
  makeDelegate();
  removeAll({"/a", "/b", "/a"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/a") + "\n" + overlay("/b") + "\n" + overlay("/a"));
}

TEST_F(BurnFSUnmount, WhatStandsAtAPlaceholdersPathIsReplaced) {
  trees.addDiscFile("/docs/a", "x");
  makeDelegate();
  removeAll({"/docs"});
  mkdir(overlay("/docs").c_str(), 0755);
  writeFile(overlay("/docs/left"), "left");
  delegate->willUnmount();
  EXPECT_TRUE(S_ISREG(statusOf(overlay("/docs")).st_mode));
}

TEST_F(BurnFSUnmount, AnOlderListIsOverwritten) {
  writeFile(trees.hideListFile(), "an older and much longer list of things\nwith lines");
  trees.addDiscFile("/a", "x");
  makeDelegate();
  removeAll({"/a"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/a"));
}

TEST_F(BurnFSUnmount, ALinkAtTheListsNameIsNotWrittenThrough) {
  writeFile(trees.root() + "/precious", "precious");
  ASSERT_EQ(symlink((trees.root() + "/precious").c_str(), trees.hideListFile().c_str()), 0);
  makeDelegate();
  delegate->willUnmount();
  EXPECT_EQ(contentOf(trees.root() + "/precious"), "precious");
}

TEST_F(BurnFSUnmount, AListWithASecondNameIsNotWrittenAndThatIsSaid) {
  makeDelegate();
  EXPECT_TRUE(delegate->hideListIsWhole());
  writeFile(trees.root() + "/precious", "precious");
  ASSERT_EQ(link((trees.root() + "/precious").c_str(), trees.hideListFile().c_str()), 0);
  delegate->willUnmount();
  EXPECT_FALSE(delegate->hideListIsWhole());
  EXPECT_EQ(contentOf(trees.root() + "/precious"), "precious");
}

TEST_F(BurnFSUnmount, AnotherUsersFileAtTheListsNameIsNotOverwritten) {
  makeDelegate();
  writeFile(trees.hideListFile(), "precious");
  if (geteuid() != 0 || chown(trees.hideListFile().c_str(), 65534, 65534) != 0) {
    GTEST_SKIP() << "only root can make another user's file";
  }
  delegate->willUnmount();
  EXPECT_FALSE(delegate->hideListIsWhole());
  EXPECT_EQ(contentOf(trees.hideListFile()), "precious");
}

TEST_F(BurnFSUnmount, TheListIsItsOwnersAlone) {
  makeDelegate();
  const mode_t before = umask(0);
  delegate->willUnmount();
  umask(before);
  EXPECT_EQ(statusOf(trees.hideListFile()).st_mode & 07777, 0600U);
}

TEST_F(BurnFSUnmount, NamesThatAreNoUtf8AndLineFeedsAreWrittenAsTheyAre) {
  trees.addDiscFile("/\xff[\xfe", "x");
  trees.addDiscFile("/two\nlines", "x");
  makeDelegate();
  removeAll({"/\xff[\xfe", "/two\nlines"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/\xff*\xfe") + "\n" + overlay("/two\nlines"));
}

TEST_F(BurnFSUnmount, TheBytesWrittenCanBeReadAfterwards) {
  makeDelegate();
  create("/file", "12345");
  delegate->willUnmount();
  EXPECT_EQ(delegate->localusedbytes(), 5);
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(BurnFSUnmount, TheDelegatesEndDeletesNothing) {
  makeDelegate();
  create("/file", "12345");
  delegate.reset();
  EXPECT_EQ(contentOf(overlay("/file")), "12345");
}

TEST_F(BurnFSUnmount, PlaceholdersOfHousekeepingAreTidiedAwayAndTheirLinesStay) {
  trees.addDiscFile("/.TemporaryItems/a", "x");
  trees.addDiscFile("/._.Trashes", "x");
  makeDelegate();
  removeAll({"/.TemporaryItems/a", "/._.Trashes"});
  delegate->willUnmount();
  EXPECT_EQ(hideList(), overlay("/.TemporaryItems/a") + "\n" + overlay("/._.Trashes"));
  EXPECT_THAT(namesIn(trees.overlay()), IsEmpty());
}

TEST_F(BurnFSUnmount, HousekeepingBelowTheRootIsKept) {
  makeDelegate();
  create("/sub/.Trashes");
  create("/.TrashesX");
  delegate->willUnmount();
  EXPECT_THAT(namesIn(trees.overlay()), ElementsAre(".TrashesX", "sub"));
  EXPECT_TRUE(exists(overlay("/sub/.Trashes")));
}

TEST_F(BurnFSUnmount, WhatIsDeletedStaysHidden) {
  trees.addDiscFile("/a", "x");
  makeDelegate();
  removeAll({"/a"});
  delegate->willUnmount();
  EXPECT_FALSE(isVisible("/a"));
}

TEST_F(BurnFSUnmount, AListThatCannotBeWrittenIsPassedOverInSilence) {
  trees.addDiscFile("/a", "x");
  makeDelegate();
  create("/.Trashes/x");
  removeAll({"/a"});
  mkdir(trees.hideListFile().c_str(), 0700);
  delegate->willUnmount();
  EXPECT_THAT(namesIn(trees.overlay()), ElementsAre("a")) << "the other steps are taken";
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(BurnFSUnmount, APlaceholderThatCannotBeMadeIsPassedOverInSilence) {
  trees.addDiscFile("/a/b", "x");
  makeDelegate();
  removeAll({"/a", "/a/b"});
  delegate->willUnmount();
  EXPECT_THAT(log, IsEmpty());
}

}  // namespace
}  // namespace kelvane::tests

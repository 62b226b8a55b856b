// SPDX-License-Identifier: GPL-2.0-or-later
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BurnFSMove : public DelegateTest {
 protected:
  bool move(const std::string& from, const std::string& to) {
    error = {};
    return delegate->moveItemAtPath(from, to, &error);
  }
  PosixError error;
};

TEST_F(BurnFSMove, AnOverlayItemIsRenamedAndTheParentOfItsDestinationIsMade) {
  trees.addDiscDirectory("/only/on/disc");
  makeDelegate();
  create("/file", "text");
  ASSERT_TRUE(move("/file", "/only/on/disc/renamed"));
  EXPECT_FALSE(error.isSet());
  EXPECT_EQ(contentOf(overlay("/only/on/disc/renamed")), "text");
  EXPECT_FALSE(isVisible("/file"));
}

TEST_F(BurnFSMove, TheDiscsVersionOfARenamedOverlayItemBecomesVisibleAgain) {
  trees.addDiscFile("/file", "from the disc");
  makeDelegate();
  create("/file", "new");
  ASSERT_TRUE(move("/file", "/other"));
  const auto attributes = delegate->attributesOfItemAtPath("/file", nullptr, nullptr);
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->origin, ItemOrigin::ReadOnly);
  EXPECT_EQ(attributes->status->st_size, 13);
}

TEST_F(BurnFSMove, AMoveToADeletedPathMakesItVisible) {
  trees.addDiscFile("/gone", "disc");
  makeDelegate();
  create("/file", "text");
  delegate->removeItemAtPath("/gone", nullptr);
  delegate->removeItemAtPath("/gone", nullptr);
  ASSERT_TRUE(move("/file", "/gone"));
  EXPECT_TRUE(isVisible("/gone"));
}

TEST_F(BurnFSMove, AFailedRenameReportsSuccessWithTheErrorSet) {
  makeDelegate();
  create("/file", "text");
  create("/directory/x");
  EXPECT_TRUE(move("/file", "/directory"));
  EXPECT_EQ(error.code, EISDIR);
  EXPECT_TRUE(isVisible("/file"));
}

TEST_F(BurnFSMove, AFailedRenameLeavesItsDestinationHidden) {
  trees.addDiscDirectory("/gone");
  makeDelegate();
  create("/file");
  delegate->removeItemAtPath("/gone", nullptr);
  // A directory that the overlay holds at the hidden path lets the rename fail.
  mkdir(overlay("/gone").c_str(), 0755);
  EXPECT_TRUE(move("/file", "/gone"));
  EXPECT_EQ(error.code, EISDIR);
  EXPECT_FALSE(isVisible("/gone"));
}

TEST_F(BurnFSMove, ADiscFileIsCopiedUpMadeWritableAndHidden) {
  trees.addDiscFile("/a/file", "disc", 0444);
  makeDelegate();
  ASSERT_TRUE(move("/a/file", "/b/moved"));
  EXPECT_FALSE(error.isSet());
  EXPECT_EQ(contentOf(overlay("/b/moved")), "disc");
  EXPECT_EQ(statusOf(overlay("/b/moved")).st_mode & 07777, 0666U);
  EXPECT_FALSE(isVisible("/a/file"));
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSMove, ACopyKeepsTheTimesOfTheDiscsFile) {
  trees.addDiscFile("/file", "disc");
  const timespec times[2] = {{1000, 0}, {2000, 5}};
  utimensat(AT_FDCWD, (trees.disc() + "/file").c_str(), times, 0);
  makeDelegate();
  ASSERT_TRUE(move("/file", "/moved"));
  EXPECT_EQ(statusOf(overlay("/moved")).st_mtim.tv_sec, 2000);
  EXPECT_EQ(statusOf(overlay("/moved")).st_mtim.tv_nsec, 5);
}

TEST_F(BurnFSMove, ADiscDirectoryIsCopiedWithItsSubtreeAndEveryPermissionWidened) {
  trees.addDiscFile("/docs/sub/file", "text", 0400);
  trees.addDiscDirectory("/docs/empty", 0555);
  trees.addDiscLink("/docs/link", "sub/file");
  trees.sealDisc();
  makeDelegate();
  ASSERT_TRUE(move("/docs", "/moved"));
  EXPECT_EQ(contentOf(overlay("/moved/sub/file")), "text");
  EXPECT_EQ(statusOf(overlay("/moved/sub/file")).st_mode & 07777, 0666U);
  EXPECT_EQ(statusOf(overlay("/moved/empty")).st_mode & 07777, 0777U);
  EXPECT_EQ(statusOf(overlay("/moved")).st_mode & 07777, 0777U);
  EXPECT_TRUE(S_ISLNK(statusOf(overlay("/moved/link")).st_mode));
  EXPECT_FALSE(isVisible("/docs"));
  EXPECT_EQ(delegate->localusedbytes(), 0);
}

TEST_F(BurnFSMove, WideningPermissionsNeverReachesThroughALink) {
  writeFile(trees.root() + "/secret", "secret");
  chmod((trees.root() + "/secret").c_str(), 0600);
  trees.addDiscLink("/docs/link", trees.root() + "/secret");
  makeDelegate();
  ASSERT_TRUE(move("/docs", "/moved"));
  EXPECT_EQ(statusOf(trees.root() + "/secret").st_mode & 07777, 0600U);
}

TEST_F(BurnFSMove, ADirectoryOfTheDiscThatWasAddedToGivesUpOnlyWhatWasAdded) {
  trees.addDiscFile("/docs/old", "old");
  makeDelegate();
  create("/docs/new", "new");
  ASSERT_TRUE(move("/docs", "/moved"));
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/moved", nullptr), ElementsAre("new"));
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/docs", nullptr), ElementsAre("old"));
}

TEST_F(BurnFSMove, WhatIsNowhereCannotBeMoved) {
  makeDelegate();
  EXPECT_FALSE(move("/nowhere", "/b"));
  EXPECT_FALSE(error.isSet());
  makeDelegateOver(std::nullopt, {});
  EXPECT_FALSE(move("/nowhere", "/b"));
  EXPECT_FALSE(error.isSet());
}

TEST_F(BurnFSMove, ACopyOntoAnOverlayItemFailsAndLeavesBoth) {
  trees.addDiscFile("/disc", "disc");
  makeDelegate();
  create("/overlay", "overlay");
  EXPECT_FALSE(move("/disc", "/overlay"));
  EXPECT_FALSE(error.isSet());
  EXPECT_TRUE(isVisible("/disc"));
  EXPECT_EQ(contentOf(overlay("/overlay")), "overlay");
}

TEST_F(BurnFSMove, ALinkThatLeadsNowhereIsNotFound) {
  makeDelegate();
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/link", "target", nullptr));
  EXPECT_FALSE(move("/link", "/other"));
  EXPECT_FALSE(error.isSet());
}

TEST_F(BurnFSMove, AMoveBelowTrashesDeletesAndSucceeds) {
  trees.addDiscFile("/disc", "disc");
  makeDelegate();
  create("/overlay", "text");
  sizeChanges = 0;
  EXPECT_TRUE(move("/overlay", "/.Trashes/501/x"));
  EXPECT_FALSE(exists(overlay("/overlay")));
  EXPECT_FALSE(exists(overlay("/.Trashes")));
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_EQ(sizeChanges, 1);
  EXPECT_TRUE(move("/disc", "/.TrashesX"));
  EXPECT_FALSE(isVisible("/disc"));
}

TEST_F(BurnFSMove, AMoveOfNothingBelowTrashesSucceedsAndIsLogged) {
  makeDelegate();
  EXPECT_TRUE(move("/nowhere", "/.Trashes/501/x"));
  EXPECT_FALSE(error.isSet());
  EXPECT_THAT(log, ElementsAre("Error removing item /nowhere. Nowhere to be found."));
}

TEST_F(BurnFSMove, TheCopyOfAHiddenDiscItemIsMadeAllTheSame) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  delegate->removeItemAtPath("/file", nullptr);
  EXPECT_TRUE(move("/file", "/copy"));
  EXPECT_EQ(contentOf(overlay("/copy")), "disc");
}

TEST_F(BurnFSMove, TheParentIsMadeBeforeARenameThatFails) {
  makeDelegate();
  create("/directory/file");
  EXPECT_TRUE(move("/directory", "/directory/new/below"));
  EXPECT_EQ(error.code, EINVAL);
  EXPECT_TRUE(exists(overlay("/directory/new")));
  EXPECT_TRUE(isVisible("/directory/file"));
}

TEST_F(BurnFSMove, TheParentIsMadeBeforeACopyThatFails) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  EXPECT_FALSE(move("/file", "/new/" + std::string(256, 'n')));
  EXPECT_FALSE(error.isSet());
  EXPECT_TRUE(exists(overlay("/new")));
  EXPECT_TRUE(isVisible("/file")) << "hidden only once it has been copied";
  delegate->willUnmount();
  EXPECT_EQ(contentOf(trees.hideListFile()), "");
}

TEST_F(BurnFSMove, ACopyToADeletedPathMakesItVisible) {
  trees.addDiscFile("/file", "disc");
  trees.addDiscFile("/gone", "gone");
  makeDelegate();
  delegate->removeItemAtPath("/gone", nullptr);
  delegate->removeItemAtPath("/gone", nullptr);
  ASSERT_TRUE(move("/file", "/gone"));
  EXPECT_EQ(delegate->attributesOfItemAtPath("/gone", nullptr, nullptr)->status->st_size, 4);
  delegate->willUnmount();
  EXPECT_EQ(contentOf(trees.hideListFile()), overlay("/file"));
}

TEST_F(BurnFSMove, ARenamedOverlayItemIsNotPutOnTheHideList) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  create("/file", "new");
  ASSERT_TRUE(move("/file", "/moved"));
  delegate->willUnmount();
  EXPECT_EQ(contentOf(trees.hideListFile()), "");
}

TEST_F(BurnFSMove, EveryCopyFromTheSamePathHidesItOnceMore) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  ASSERT_TRUE(move("/file", "/first"));
  ASSERT_TRUE(move("/file", "/second"));
  delegate->willUnmount();
  EXPECT_EQ(contentOf(trees.hideListFile()), overlay("/file") + "\n" + overlay("/file"));
}

TEST_F(BurnFSMove, TheCopyOfADirectoryHasWhatWasDeletedInItToo) {
  trees.addDiscFile("/docs/deleted", "x");
  trees.addDiscFile("/docs/kept", "x");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/docs/deleted", nullptr));
  ASSERT_TRUE(move("/docs", "/moved"));
  EXPECT_THAT(namesIn(overlay("/moved")), ElementsAre("deleted", "kept"));
}

TEST_F(BurnFSMove, OnlyAPathThatBeginsWithTrashesDeletes) {
  makeDelegate();
  create("/file", "text");
  ASSERT_TRUE(move("/file", "/sub/.Trashes"));
  ASSERT_TRUE(move("/sub/.Trashes", "/.trashes"));
  ASSERT_TRUE(move("/.trashes", "/.Trash"));
  EXPECT_EQ(contentOf(overlay("/.Trash")), "text");
}

TEST_F(BurnFSMove, ALinkOfTheDiscIsCopiedAsALinkWhereItLeadsSomewhere) {
  trees.addDiscFile("/target", "x");
  trees.addDiscLink("/link", "target");
  trees.addDiscLink("/broken", "no such target");
  makeDelegate();
  ASSERT_TRUE(move("/link", "/moved"));
  EXPECT_TRUE(S_ISLNK(statusOf(overlay("/moved")).st_mode));
  EXPECT_FALSE(isVisible("/link"));
  EXPECT_FALSE(move("/broken", "/other"));
  EXPECT_FALSE(error.isSet());
  EXPECT_TRUE(isVisible("/broken"));
}

}  // namespace
}  // namespace kelvane::tests

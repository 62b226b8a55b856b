// SPDX-License-Identifier: GPL-2.0-or-later
#include <unistd.h>

#include <cerrno>

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using BurnFSRemove = DelegateTest;

TEST_F(BurnFSRemove, ADiscItemIsOnlyHiddenAndNothingIsAnnounced) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  EXPECT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  EXPECT_FALSE(isVisible("/file"));
  EXPECT_EQ(contentOf(trees.disc() + "/file"), "disc");
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSRemove, AnOverlayCopyIsRemovedItsSizeGivenBackAndTheDiscsFileHidden) {
  trees.addDiscFile("/file", "a long text of the disc");
  makeDelegate();
  create("/file", "12345");
  EXPECT_EQ(delegate->localusedbytes(), 5);
  sizeChanges = 0;
  EXPECT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  EXPECT_FALSE(exists(overlay("/file")));
  EXPECT_FALSE(isVisible("/file"));
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_EQ(sizeChanges, 1);
}

TEST_F(BurnFSRemove, AnOverlayItemOfItsOwnIsNotPutOnTheHideList) {
  makeDelegate();
  create("/file", "x");
  EXPECT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  delegate->willUnmount();
  EXPECT_EQ(contentOf(trees.hideListFile()), "");
}

TEST_F(BurnFSRemove, AWholeOverlayDirectoryGivesBackItsOwnEntrysSizeAlone) {
  makeDelegate();
  create("/directory/file", std::string(10000, 'x'));
  const off_t size = statusOf(overlay("/directory")).st_size;
  EXPECT_TRUE(delegate->removeItemAtPath("/directory", nullptr));
  EXPECT_FALSE(exists(overlay("/directory")));
  EXPECT_EQ(delegate->localusedbytes(), 10000 - size);
}

TEST_F(BurnFSRemove, TheCountMayFallBelowZero) {
  trees.addDiscFile("/file", "12345");
  makeDelegate();
  ASSERT_TRUE(delegate->moveItemAtPath("/file", "/moved", nullptr));
  EXPECT_TRUE(delegate->removeItemAtPath("/moved", nullptr));
  EXPECT_EQ(delegate->localusedbytes(), -5);
}

TEST_F(BurnFSRemove, WhatIsNowhereFailsWithoutAnErrorAndIsLogged) {
  makeDelegate();
  PosixError error;
  EXPECT_FALSE(delegate->removeItemAtPath("/gone", &error));
  EXPECT_FALSE(error.isSet());
  EXPECT_THAT(log, ElementsAre("Error removing item /gone. Nowhere to be found."));
}

TEST_F(BurnFSRemove, WithoutADiscWhatTheOverlayLacksIsNowhere) {
  makeDelegateOver(std::nullopt, {});
  EXPECT_FALSE(delegate->removeItemAtPath("/gone", nullptr));
  EXPECT_THAT(log, ElementsAre("Error removing item /gone. Nowhere to be found."));
}

TEST_F(BurnFSRemove, AnOverlayItemThatCannotBeRemovedIsLoggedAndStays) {
  makeDelegate();
  // The root of the overlay cannot be removed while the folder above it allows no change; for root,
  // who may change everything, a mount point's own rule serves: "." cannot be removed.
  PosixError error;
  create("/directory/file");
  EXPECT_FALSE(delegate->removeItemAtPath("/directory/.", &error));
  EXPECT_FALSE(error.isSet());
  EXPECT_THAT(log, ElementsAre("Error removing tmp file for /directory/."));
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSRemove, ALinkIsRemovedAndNotWhatItLeadsTo) {
  makeDelegate();
  writeFile(trees.root() + "/precious", "precious");
  ASSERT_EQ(symlink((trees.root() + "/precious").c_str(), overlay("/link").c_str()), 0);
  EXPECT_TRUE(delegate->removeItemAtPath("/link", nullptr));
  EXPECT_FALSE(exists(overlay("/link")));
  EXPECT_EQ(contentOf(trees.root() + "/precious"), "precious");
}

TEST_F(BurnFSRemove, ABrokenLinkOfTheDiscCanBeRemoved) {
  trees.addDiscLink("/broken", "no such target");
  makeDelegate();
  EXPECT_TRUE(delegate->removeItemAtPath("/broken", nullptr));
  EXPECT_FALSE(isVisible("/broken"));
}

TEST_F(BurnFSRemove, APathDeletedTwiceStandsTwiceInTheList) {
  trees.addDiscFile("/file", "x");
  makeDelegate();
  EXPECT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  EXPECT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  delegate->willUnmount();
  EXPECT_EQ(contentOf(trees.hideListFile()), overlay("/file") + "\n" + overlay("/file"));
}

TEST_F(BurnFSRemove, ARecreatedDirectoryShowsItsOldContentsAgain) {
  trees.addDiscFile("/docs/old", "x");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/docs", nullptr));
  ASSERT_TRUE(delegate->removeItemAtPath("/docs", nullptr));
  EXPECT_TRUE(delegate->createDirectoryAtPath("/docs", {}, nullptr));
  EXPECT_TRUE(isVisible("/docs"));
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/docs", nullptr), ElementsAre("old"));
}

TEST_F(BurnFSRemove, ADirectoryIsMadeWithThoseAboveItAndTheGivenPermissions) {
  makeDelegate();
  AttributeChanges attributes;
  attributes.NSFilePosixPermissions = 0710;
  EXPECT_TRUE(delegate->createDirectoryAtPath("/a/b/c", attributes, nullptr));
  EXPECT_EQ(statusOf(overlay("/a/b/c")).st_mode & 07777, 0710U);
}

TEST_F(BurnFSRemove, ADirectoryWhereAFileStandsFailsWithTheFileManagersError) {
  makeDelegate();
  create("/file");
  PosixError error;
  EXPECT_FALSE(delegate->createDirectoryAtPath("/file", {}, &error));
  EXPECT_EQ(error.code, EEXIST);
  error = {};
  EXPECT_FALSE(delegate->createDirectoryAtPath("/file/below", {}, &error));
  EXPECT_EQ(error.code, ENOTDIR);
}

TEST_F(BurnFSRemove, MakingADirectoryAtAHiddenItemOfTheOverlayOnlyShowsIt) {
  trees.addDiscFile("/moved/a", "disc");
  makeDelegate();
  create("/fresh/a", "new");
  delegate->removeItemAtPath("/moved/a", nullptr);
  delegate->removeItemAtPath("/moved", nullptr);
  ASSERT_TRUE(delegate->moveItemAtPath("/fresh", "/moved", nullptr));
  ASSERT_FALSE(isVisible("/moved/a"));
  EXPECT_FALSE(delegate->createDirectoryAtPath("/moved/a", {}, nullptr));
  EXPECT_TRUE(isVisible("/moved/a"));
  EXPECT_EQ(contentOf(overlay("/moved/a")), "new");
}

}  // namespace
}  // namespace kelvane::tests

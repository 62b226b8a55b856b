// SPDX-License-Identifier: GPL-2.0-or-later
#include <unistd.h>

#include <cerrno>
#include <cmath>

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using BurnFSLookup = DelegateTest;

TEST_F(BurnFSLookup, TheOverlayDirectoryIsMadeForItsOwnerAlone) {
  makeDelegate();
  const auto status = statusOf(trees.overlay());
  EXPECT_TRUE(S_ISDIR(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777, 0700U);
  EXPECT_TRUE(delegate->overlayDirectoryIsOwn());
}

TEST_F(BurnFSLookup, AnExistingOverlayDirectoryIsReusedAndClosedToOthers) {
  mkdir(trees.overlay().c_str(), 0755);
  chmod(trees.overlay().c_str(), 0755);
  writeFile(overlay("/kept"), "kept");
  makeDelegate();
  EXPECT_TRUE(isVisible("/kept"));
  EXPECT_TRUE(delegate->overlayDirectoryIsOwn());
}

TEST_F(BurnFSLookup, TheDirectoryAboveTheOverlayDirectoryIsNotMade) {
  const BurnFSDelegate other(trees.root() + "/no/such", std::nullopt, {});
  EXPECT_FALSE(exists(trees.root() + "/no"));
  EXPECT_FALSE(other.overlayDirectoryIsOwn());
}

TEST_F(BurnFSLookup, ALinkAtTheOverlayDirectorysNameIsNotItsOwn) {
  mkdir((trees.root() + "/elsewhere").c_str(), 0700);
  ASSERT_EQ(symlink((trees.root() + "/elsewhere").c_str(), trees.overlay().c_str()), 0);
  makeDelegate();
  EXPECT_FALSE(delegate->overlayDirectoryIsOwn());
}

TEST_F(BurnFSLookup, AFreshVolumeListsExactlyTheDiscsNamesInTheDiscsOrder) {
  for (const char* name : {"/zeta", "/alpha", "/mid", "/Beta"}) trees.addDiscFile(name, "x");
  makeDelegate();
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr),
              ElementsAreArray(LocalFileManager().contentsOfDirectory(trees.disc())));
}

TEST_F(BurnFSLookup, ANewFileIsListedAfterTheDiscsNames) {
  trees.addDiscFile("/docs/a", "x");
  trees.addDiscFile("/docs/z", "x");
  makeDelegate();
  create("/docs/m");
  const auto names = delegate->contentsOfDirectoryAtPath("/docs", nullptr);
  ASSERT_EQ(names.size(), 3U);
  EXPECT_EQ(names.back(), "m");
}

TEST_F(BurnFSLookup, ANameInBothTreesIsListedOnce) {
  trees.addDiscFile("/both", "disc");
  makeDelegate();
  create("/both", "overlay");
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr), ElementsAre("both"));
}

TEST_F(BurnFSLookup, TheListingOfWhatIsNowhereIsEmptyAndNoError) {
  makeDelegate();
  PosixError error;
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/nowhere", &error), IsEmpty());
  EXPECT_FALSE(error.isSet());
}

TEST_F(BurnFSLookup, HousekeepingFoldersOfTheOverlayAreListed) {
  makeDelegate();
  create("/.Trashes");
  create("/.TemporaryItems");
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr),
              UnorderedElementsAre(".Trashes", ".TemporaryItems"));
}

TEST_F(BurnFSLookup, NamesThatAreNoUtf8PassThroughAsBytes) {
  trees.addDiscFile(
      "/\xff\xfe"
      "disc",
      "x");
  makeDelegate();
  create(
      "/\xc3\x28"
      "over");
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr), ElementsAre("\xff\xfe"
                                                                             "disc",
                                                                             "\xc3\x28"
                                                                             "over"));
  EXPECT_TRUE(
      isVisible("/\xff\xfe"
                "disc"));
}

TEST_F(BurnFSLookup, AnOverlayItemHasItsOwnAttributesUnwidened) {
  trees.addDiscFile("/both", "a long text on the disc");
  makeDelegate();
  create("/both", "new");
  chmod(overlay("/both").c_str(), 0400);
  const auto attributes = delegate->attributesOfItemAtPath("/both", nullptr, nullptr);
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->origin, ItemOrigin::Writable);
  EXPECT_EQ(attributes->status->st_mode & 07777, 0400U);
  EXPECT_EQ(attributes->status->st_size, 3);
}

TEST_F(BurnFSLookup, DiscItemsLookReadableAndWritableForAll) {
  trees.addDiscFile("/file", "x", 0444);
  trees.addDiscFile("/program", "x", 0500);
  trees.addDiscDirectory("/directory", 0555);
  makeDelegate();
  const auto modeOf = [this](const std::string& path) {
    return delegate->attributesOfItemAtPath(path, nullptr, nullptr)->status->st_mode & 07777;
  };
  EXPECT_EQ(modeOf("/file"), 0666U);
  EXPECT_EQ(modeOf("/program"), 0766U);
  EXPECT_EQ(modeOf("/directory"), 0777U);
  EXPECT_EQ(delegate->attributesOfItemAtPath("/file", nullptr, nullptr)->origin,
            ItemOrigin::ReadOnly);
}

TEST_F(BurnFSLookup, AttributesAreThoseOfALinkAndNotOfWhatItLeadsTo) {
  trees.addDiscFile("/target", "a text");
  trees.addDiscLink("/link", "target");
  trees.addDiscLink("/broken", "no such target");
  makeDelegate();
  for (const std::string path : {"/link", "/broken"}) {
    const auto attributes = delegate->attributesOfItemAtPath(path, nullptr, nullptr);
    ASSERT_TRUE(attributes.has_value()) << path;
    EXPECT_TRUE(S_ISLNK(attributes->status->st_mode)) << path;
  }
}

TEST_F(BurnFSLookup, WhatIsNowhereHasNoAttributesAndSetsNoError) {
  makeDelegate();
  PosixError error;
  EXPECT_FALSE(delegate->attributesOfItemAtPath("/nowhere", nullptr, &error).has_value());
  EXPECT_FALSE(error.isSet());
}

TEST_F(BurnFSLookup, ADeletedDiscItemIsNeitherListedNorFoundAndSetsNoError) {
  trees.addDiscFile("/docs/a", "x");
  trees.addDiscFile("/docs/b", "x");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/docs/a", nullptr));
  PosixError error;
  EXPECT_FALSE(delegate->attributesOfItemAtPath("/docs/a", nullptr, &error).has_value());
  EXPECT_FALSE(error.isSet());
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/docs", nullptr), ElementsAre("b"));
}

TEST_F(BurnFSLookup, AnItemBelowADeletedDirectoryIsStillFoundByItsOwnPath) {
  trees.addDiscFile("/docs/a", "x");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/docs", nullptr));
  EXPECT_FALSE(isVisible("/docs"));
  EXPECT_TRUE(isVisible("/docs/a"));
}

TEST_F(BurnFSLookup, EverythingThatBeginsWithTrashesExistsWithEmptyAttributes) {
  makeDelegate();
  for (const std::string path : {"/.Trashes", "/.Trashes/501", "/.Trashes/501/x", "/.TrashesX"}) {
    const auto attributes = delegate->attributesOfItemAtPath(path, nullptr, nullptr);
    ASSERT_TRUE(attributes.has_value()) << path;
    EXPECT_TRUE(attributes->isEmpty()) << path;
  }
  EXPECT_FALSE(isVisible("/sub/.Trashes"));
  EXPECT_FALSE(isVisible("/.trashes"));
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr), IsEmpty());
}

TEST_F(BurnFSLookup, TheVolumeReportsCapacityAndFreeSpaceOfTheDisc) {
  makeDelegate({700, 100});
  const auto capacity = delegate->attributesOfFileSystemForPath("/anything", nullptr);
  ASSERT_TRUE(capacity.has_value());
  EXPECT_EQ(capacity->NSFileSystemSize, 734003200U);
  EXPECT_EQ(capacity->NSFileSystemFreeSize, 629145600U);
  EXPECT_EQ(capacity->NSFileSystemNodes, 0U);
  EXPECT_EQ(capacity->NSFileSystemFreeNodes, 10000000U);
}

TEST_F(BurnFSLookup, FractionsOfAMegabyteAreCutOff) {
  makeDelegate({679.9, 99.999});
  const auto capacity = delegate->attributesOfFileSystemForPath("/", nullptr);
  EXPECT_EQ(capacity->NSFileSystemSize, 679ULL << 20);
  EXPECT_EQ(capacity->NSFileSystemFreeSize, 580ULL << 20);
}

TEST_F(BurnFSLookup, MissingAndSenselessCapacitiesCountAsNothing) {
  makeDelegate({});
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemSize, 0U);
  makeDelegate({std::nan(""), INFINITY});
  const auto capacity = delegate->attributesOfFileSystemForPath("/", nullptr);
  EXPECT_EQ(capacity->NSFileSystemSize, 0U);
  EXPECT_EQ(capacity->NSFileSystemFreeSize, 0U);
}

TEST_F(BurnFSLookup, MoreUsedThanThereIsShowsAsAHugeFreeSpace) {
  makeDelegate({100, 101});
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemFreeSize,
            0ULL - (1ULL << 20));
}

TEST_F(BurnFSLookup, WithoutADiscTheVolumeIsAPlainViewOfTheOverlay) {
  makeDelegateOver(std::nullopt, {700, 0});
  create("/file", "text");
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr), ElementsAre("file"));
  EXPECT_TRUE(isVisible("/file"));
  EXPECT_FALSE(isVisible("/other"));
  EXPECT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  EXPECT_FALSE(isVisible("/file"));
}

TEST_F(BurnFSLookup, ExtendedAttributesAreNotSupported) {
  makeDelegate();
  create("/file");
  PosixError list;
  PosixError value;
  PosixError set;
  PosixError removal;
  EXPECT_FALSE(delegate->extendedAttributesOfItemAtPath("/file", &list).has_value());
  EXPECT_FALSE(delegate->valueOfExtendedAttribute("dummy", "/file", 0, &value).has_value());
  EXPECT_FALSE(delegate->setExtendedAttribute("dummy", "/file", "", 0, 0, &set));
  EXPECT_FALSE(delegate->removeExtendedAttribute("dummy", "/file", &removal));
  for (const PosixError error : {list, value, set, removal}) EXPECT_EQ(error.code, ENOSYS);
}

TEST_F(BurnFSLookup, NothingIsCountedAndNothingHiddenToBeginWith) {
  trees.addDiscFile("/file", "x");
  makeDelegate();
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_TRUE(isVisible("/file"));
}

TEST_F(BurnFSLookup, EachOfTheCapacitiesMayBeMissing) {
  makeDelegate({700, std::nullopt});
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemSize, 734003200U);
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemFreeSize,
            734003200U);
  makeDelegate({std::nullopt, 100});
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemSize, 0U);
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemFreeSize,
            0ULL - (100ULL << 20));
}

TEST_F(BurnFSLookup, FractionsAreCutTowardZero) {
  makeDelegate({-1.9, -0.9});
  const auto capacity = delegate->attributesOfFileSystemForPath("/", nullptr);
  EXPECT_EQ(capacity->NSFileSystemSize, 0ULL - (1ULL << 20));
  EXPECT_EQ(capacity->NSFileSystemFreeSize, 0ULL - (1ULL << 20));
}

TEST_F(BurnFSLookup, ADeletedItemOfTheRootIsNotListed) {
  trees.addDiscFile("/a", "x");
  trees.addDiscFile("/b", "x");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/a", nullptr));
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr), ElementsAre("b"));
}

TEST_F(BurnFSLookup, AnOverlayItemAtADeletedPathIsListedThoughItIsNotFound) {
  trees.addDiscFile("/file", "x");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/file", "target", nullptr));
  EXPECT_THAT(delegate->contentsOfDirectoryAtPath("/", nullptr), ElementsAre("file"));
  EXPECT_FALSE(isVisible("/file"));
}

TEST_F(BurnFSLookup, TheListingOfAFileIsEmptyAndNoError) {
  trees.addDiscFile("/disc", "x");
  makeDelegate();
  create("/overlay", "x");
  for (const std::string path : {"/disc", "/overlay"}) {
    PosixError error;
    EXPECT_THAT(delegate->contentsOfDirectoryAtPath(path, &error), IsEmpty()) << path;
    EXPECT_FALSE(error.isSet());
  }
}

TEST_F(BurnFSLookup, TrashesExistsWithEmptyAttributesWhetherDeletedOrThere) {
  trees.addDiscFile("/.Trashes/file", "x");
  makeDelegate();
  create("/.TrashesX", "text");
  ASSERT_TRUE(delegate->removeItemAtPath("/.Trashes/file", nullptr));
  ASSERT_TRUE(delegate->removeItemAtPath("/.Trashes", nullptr));
  for (const std::string path : {"/.Trashes", "/.Trashes/file", "/.TrashesX"}) {
    const auto attributes = delegate->attributesOfItemAtPath(path, nullptr, nullptr);
    ASSERT_TRUE(attributes.has_value()) << path;
    EXPECT_TRUE(attributes->isEmpty()) << path;
  }
}

}  // namespace
}  // namespace kelvane::tests

// SPDX-License-Identifier: GPL-2.0-or-later
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <climits>

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

class BurnFSLinks : public DelegateTest {
 protected:
  static std::string storedTextOf(const std::string& path) {
    std::array<char, PATH_MAX> text;
    const ssize_t length = readlink(path.c_str(), text.data(), text.size());
    return {text.data(), static_cast<size_t>(std::max<ssize_t>(length, 0))};
  }
  std::optional<std::string> read(const std::string& path) {
    return delegate->destinationOfSymbolicLinkAtPath(path, nullptr);
  }
};

TEST_F(BurnFSLinks, ALinkStoresTheOverlayDirectoryAndItsTextWithoutASeparator) {
  makeDelegate();
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/relative", "target", nullptr));
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/absolute", "/etc/hosts", nullptr));
  EXPECT_EQ(storedTextOf(overlay("/relative")), trees.overlay() + "target");
  EXPECT_EQ(storedTextOf(overlay("/absolute")), trees.overlay() + "/etc/hosts");
}

TEST_F(BurnFSLinks, ALinkReadsBackAsItWasMade) {
  makeDelegate();
  for (const std::string text : {"target", "/absolute", "../up", "Größe", "\xff\xfe"}) {
    ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/link", text, nullptr));
    EXPECT_EQ(read("/link"), text);
    ASSERT_TRUE(delegate->removeItemAtPath("/link", nullptr));
  }
}

TEST_F(BurnFSLinks, ALinkWhereSomethingStandsOrWithoutADirectoryIsNotMade) {
  makeDelegate();
  create("/file");
  PosixError error;
  EXPECT_FALSE(delegate->createSymbolicLinkAtPath("/file", "target", &error));
  EXPECT_FALSE(delegate->createSymbolicLinkAtPath("/no/such/link", "target", &error));
  EXPECT_FALSE(error.isSet());
}

TEST_F(BurnFSLinks, ALinkAtADeletedPathStaysHidden) {
  trees.addDiscFile("/file", "x");
  makeDelegate();
  delegate->removeItemAtPath("/file", nullptr);
  EXPECT_TRUE(delegate->createSymbolicLinkAtPath("/file", "target", nullptr));
  EXPECT_FALSE(isVisible("/file"));
}

TEST_F(BurnFSLinks, ALinkOfTheDiscLosesItsFirstCharactersToo) {
  const size_t cut = trees.overlay().size();
  trees.addDiscLink("/long", std::string(cut, '-') + "rest");
  trees.addDiscLink("/short", "target");
  makeDelegate();
  EXPECT_EQ(read("/long"), "rest");
  EXPECT_EQ(read("/short"), "");
}

TEST_F(BurnFSLinks, TheCutCountsCharactersAndNotBytes) {
  const size_t cut = trees.overlay().size();
  std::string text;
  for (size_t index = 0; index < cut; ++index) text += "ö";
  trees.addDiscLink("/umlauts", text + "über");
  makeDelegate();
  EXPECT_EQ(read("/umlauts"), "über");
}

TEST_F(BurnFSLinks, TheOverlaysLinkIsReadBeforeTheDiscs) {
  trees.addDiscLink("/link", std::string(trees.overlay().size(), '-') + "disc");
  makeDelegate();
  EXPECT_EQ(read("/link"), "disc");
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/link", "overlay", nullptr));
  EXPECT_EQ(read("/link"), "overlay");
}

TEST_F(BurnFSLinks, WhatIsNoLinkHasNoText) {
  trees.addDiscFile("/file", "x");
  makeDelegate();
  EXPECT_FALSE(read("/file").has_value());
  EXPECT_FALSE(read("/nowhere").has_value());
  makeDelegateOver(std::nullopt, {});
  EXPECT_FALSE(read("/nowhere").has_value());
}

TEST_F(BurnFSLinks, ADirectoryInThePlaceOfADiscLinkDoesNotShowWhatTheLinkLeadsTo) {
  mkdir((trees.root() + "/outside").c_str(), 0755);
  writeFile(trees.root() + "/outside/secret", "secret");
  trees.addDiscLink("/link", trees.root() + "/outside");
  trees.addDiscLink("/other", trees.root() + "/outside");
  makeDelegate();
  for (const std::string path : {"/link", "/other"}) {
    ASSERT_TRUE(delegate->removeItemAtPath(path, nullptr));
  }
  ASSERT_TRUE(delegate->createDirectoryAtPath("/link", {}, nullptr));
  ASSERT_TRUE(delegate->createDirectoryAtPath("/made", {}, nullptr));
  ASSERT_TRUE(delegate->moveItemAtPath("/made", "/other", nullptr));
  for (const std::string path : {"/link", "/other"}) {
    EXPECT_TRUE(delegate->contentsOfDirectoryAtPath(path, nullptr).empty());
    EXPECT_FALSE(isVisible(path + "/secret"));
    std::unique_ptr<UserData> file;
    EXPECT_FALSE(delegate->openFileAtPath(path + "/secret", 0, &file, nullptr));
    EXPECT_FALSE(delegate->moveItemAtPath(path + "/secret", "/stolen", nullptr));
    EXPECT_FALSE(delegate->removeItemAtPath(path + "/secret", nullptr));
    create(path + "/secret", "own");
    EXPECT_TRUE(isVisible(path + "/secret"));
  }
}

TEST_F(BurnFSLinks, AttributesAreSetOnTheOverlaysItem) {
  makeDelegate();
  create("/file", "text");
  AttributeChanges changes;
  changes.NSFilePosixPermissions = 0604;
  changes.NSFileSize = 2;
  changes.NSFileModificationDate = timespec{12345, 678};
  changes.NSFileAccessDate = timespec{999, 1};
  EXPECT_TRUE(delegate->setAttributes(changes, "/file", nullptr, nullptr));
  const auto status = statusOf(overlay("/file"));
  EXPECT_EQ(status.st_mode & 07777, 0604U);
  EXPECT_EQ(contentOf(overlay("/file")), "te");
  EXPECT_EQ(status.st_mtim.tv_sec, 12345);
  EXPECT_EQ(status.st_mtim.tv_nsec, 678);
}

TEST_F(BurnFSLinks, AttributesOfALinkAreItsOwn) {
  makeDelegate();
  writeFile(trees.root() + "/target", "x");
  const auto before = statusOf(trees.root() + "/target");
  ASSERT_EQ(symlink((trees.root() + "/target").c_str(), overlay("/link").c_str()), 0);
  AttributeChanges times;
  times.NSFileModificationDate = timespec{1, 0};
  EXPECT_TRUE(delegate->setAttributes(times, "/link", nullptr, nullptr));
  EXPECT_EQ(statusOf(overlay("/link")).st_mtim.tv_sec, 1);
  AttributeChanges permissions;
  permissions.NSFilePosixPermissions = 0777;
  EXPECT_FALSE(delegate->setAttributes(permissions, "/link", nullptr, nullptr));
  EXPECT_EQ(statusOf(trees.root() + "/target").st_mode, before.st_mode);
  EXPECT_EQ(statusOf(trees.root() + "/target").st_mtim.tv_sec, before.st_mtim.tv_sec);
}

TEST_F(BurnFSLinks, AnItemThatOnlyTheDiscHasKeepsItsAttributes) {
  trees.addDiscFile("/file", "x", 0444);
  makeDelegate();
  AttributeChanges changes;
  changes.NSFilePosixPermissions = 0600;
  PosixError error;
  EXPECT_FALSE(delegate->setAttributes(changes, "/file", nullptr, &error));
  EXPECT_FALSE(error.isSet());
  EXPECT_FALSE(delegate->setAttributes({}, "/file", nullptr, &error));
  EXPECT_EQ(statusOf(trees.disc() + "/file").st_mode & 07777, 0444U);
}

TEST_F(BurnFSLinks, ALinkIsNeitherCountedNorAnnounced) {
  makeDelegate();
  ASSERT_TRUE(delegate->createSymbolicLinkAtPath("/link", "target", nullptr));
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSLinks, ADeletedLinkOfTheDiscCanStillBeRead) {
  trees.addDiscLink("/link", std::string(trees.overlay().size(), '-') + "disc");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/link", nullptr));
  EXPECT_EQ(read("/link"), "disc");
}

TEST_F(BurnFSLinks, AnOverlayItemThatIsNoLinkShadowsTheDiscsLink) {
  trees.addDiscLink("/link", std::string(trees.overlay().size(), '-') + "disc");
  makeDelegate();
  create("/link", "a file");
  EXPECT_FALSE(read("/link").has_value());
}

}  // namespace
}  // namespace kelvane::tests

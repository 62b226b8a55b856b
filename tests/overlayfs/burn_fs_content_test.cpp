// SPDX-License-Identifier: GPL-2.0-or-later
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <thread>

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BurnFSContent : public DelegateTest {
 protected:
  std::unique_ptr<UserData> open(const std::string& path) {
    std::unique_ptr<UserData> file;
    EXPECT_TRUE(delegate->openFileAtPath(path, 0, &file, nullptr)) << path;
    return file;
  }
  int32_t write(const std::string& path, UserData* file, const std::string& text, off_t offset,
                PosixError* error = nullptr) {
    return delegate->writeFileAtPath(path, file, text.data(), text.size(), offset, error);
  }
};

TEST_F(BurnFSContent, AnOverlayFileIsOpenedForReadingAndWriting) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  create("/file", "overlay");
  const auto file = open("/file");
  ASSERT_NE(file, nullptr);
  EXPECT_TRUE(file->isWritable());
  EXPECT_EQ(write("/file", file.get(), "OVER", 0), 4);
  EXPECT_EQ(contentOf(overlay("/file")), "OVERlay");
}

TEST_F(BurnFSContent, ADiscFileIsOpenedForReadingAloneAndNotCopied) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  const auto file = open("/file");
  ASSERT_NE(file, nullptr);
  EXPECT_FALSE(file->isWritable());
  EXPECT_THAT(namesIn(trees.overlay()), IsEmpty());
}

TEST_F(BurnFSContent, AWriteToADiscFileFailsAndIsNotCounted) {
  trees.addDiscFile("/file", "disc", 0644);
  makeDelegate();
  const auto file = open("/file");
  PosixError error;
  EXPECT_EQ(write("/file", file.get(), "new", 0, &error), 0);
  EXPECT_EQ(error.code, EROFS);
  EXPECT_EQ(contentOf(trees.disc() + "/file"), "disc");
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSContent, AnOverlayFileWithoutWritePermissionCanStillBeRead) {
  makeDelegate();
  create("/sealed", "text");
  chmod(overlay("/sealed").c_str(), 0444);
  EXPECT_NE(open("/sealed"), nullptr);
}

TEST_F(BurnFSContent, OpeningWhatIsNowhereFailsWithoutAnErrorAndIsLogged) {
  makeDelegate();
  std::unique_ptr<UserData> file;
  PosixError error;
  EXPECT_FALSE(delegate->openFileAtPath("/gone %@", 0, &file, &error));
  EXPECT_FALSE(error.isSet());
  EXPECT_THAT(log, ElementsAre("Error! Openfile did not find file! /gone %@"));
}

TEST_F(BurnFSContent, AHiddenDiscFileCanStillBeOpenedByItsPath) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  EXPECT_NE(open("/file"), nullptr);
}

TEST_F(BurnFSContent, AReadReportsTheRequestedSizeWhateverWasRead) {
  trees.addDiscFile("/file", "0123456789");
  makeDelegate();
  const auto file = open("/file");
  std::string buffer(4096, '?');
  EXPECT_EQ(delegate->readFileAtPath("/file", file.get(), buffer.data(), 4096, 0, nullptr), 4096);
  EXPECT_EQ(buffer.substr(0, 12), "0123456789??");
  EXPECT_EQ(delegate->readFileAtPath("/file", file.get(), buffer.data(), 100, 5000, nullptr), 100);
  EXPECT_EQ(delegate->readFileAtPath("/file", file.get(), buffer.data(), 3, 4, nullptr), 3);
  EXPECT_EQ(buffer.substr(0, 3), "456");
}

TEST_F(BurnFSContent, AReadWithoutUserDataReadsNothingAndIsLogged) {
  makeDelegate();
  char byte = 0;
  EXPECT_EQ(delegate->readFileAtPath("/file", nullptr, &byte, 1, 0, nullptr), 0);
  EXPECT_THAT(log, ElementsAre("Error! Readfile /file with userData (null)"));
}

TEST_F(BurnFSContent, AReleaseWithoutUserDataIsLogged) {
  makeDelegate();
  delegate->releaseFileAtPath("/file", nullptr);
  EXPECT_THAT(log, ElementsAre("Error! Releasefile with nil userdata /file"));
}

TEST_F(BurnFSContent, AReleaseClosesTheDescriptor) {
  trees.addDiscFile("/file", "x");
  makeDelegate();
  auto file = open("/file");
  const int descriptor = file->fileDescriptor();
  ASSERT_GE(descriptor, 0);
  delegate->releaseFileAtPath("/file", std::move(file));
  EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), -1);
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(BurnFSContent, OverwritingIsCountedAgain) {
  makeDelegate();
  create("/file");
  const auto file = open("/file");
  const std::string hundred(100, 'x');
  EXPECT_EQ(write("/file", file.get(), hundred, 0), 100);
  EXPECT_EQ(write("/file", file.get(), hundred, 0), 100);
  EXPECT_EQ(delegate->localusedbytes(), 200);
  EXPECT_EQ(statusOf(overlay("/file")).st_size, 100);
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemFreeSize,
            629145600U - 200);
}

TEST_F(BurnFSContent, EveryWriteIsAnnounced) {
  makeDelegate();
  create("/file");
  EXPECT_EQ(sizeChanges, 0);
  const auto file = open("/file");
  write("/file", file.get(), "a", 0);
  write("/file", file.get(), "b", 1);
  EXPECT_EQ(sizeChanges, 2);
}

TEST_F(BurnFSContent, AWriteBeyondTheEndLeavesAHoleOfZeros) {
  makeDelegate();
  create("/file");
  const auto file = open("/file");
  write("/file", file.get(), "end", 4);
  EXPECT_EQ(contentOf(overlay("/file")), std::string("\0\0\0\0end", 7));
}

TEST_F(BurnFSContent, CreatingWithExactly4096BytesFreeSucceeds) {
  makeDelegateWithFree(4096);
  std::unique_ptr<UserData> file;
  EXPECT_TRUE(delegate->createFileAtPath("/file", {}, &file, nullptr));
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSContent, CreatingWith4095BytesFreeFailsAndMakesNothing) {
  trees.addDiscFile("/hidden", "x");
  makeDelegateWithFree(4095);
  ASSERT_TRUE(delegate->removeItemAtPath("/hidden", nullptr));
  std::unique_ptr<UserData> file;
  PosixError error;
  EXPECT_FALSE(delegate->createFileAtPath("/new/file", {}, &file, &error));
  EXPECT_EQ(error.code, ENOSPC);
  EXPECT_EQ(file, nullptr);
  EXPECT_FALSE(exists(overlay("/new")));
  EXPECT_FALSE(delegate->createFileAtPath("/hidden", {}, &file, &error));
  EXPECT_FALSE(isVisible("/hidden"));
}

TEST_F(BurnFSContent, WriteStartedWith4096BytesFreeIsAcceptedWhateverItsLength) {
  makeDelegateWithFree(4096);
  const auto file = open("/filler");
  EXPECT_EQ(write("/filler", file.get(), std::string(10 << 20, 'y'), 0), 10 << 20);
}

TEST_F(BurnFSContent, WriteStartedWith4095BytesFreeFails) {
  makeDelegateWithFree(4095);
  const auto file = open("/filler");
  PosixError error;
  EXPECT_EQ(write("/filler", file.get(), "x", 0, &error), 0);
  EXPECT_EQ(error.code, ENOSPC);
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSContent, AWriteOf10MegabytesWith5000BytesFreeLeavesADeficit) {
  makeDelegateWithFree(5000);
  const auto file = open("/filler");
  constexpr int64_t kTenMegabytes = 10 << 20;
  EXPECT_EQ(write("/filler", file.get(), std::string(kTenMegabytes, 'y'), 0), kTenMegabytes);
  EXPECT_EQ(delegate->attributesOfFileSystemForPath("/", nullptr)->NSFileSystemFreeSize,
            static_cast<uint64_t>(5000 - kTenMegabytes));
}

TEST_F(BurnFSContent, CreatingInADirectoryOfTheDiscBuildsItsChainInTheOverlay) {
  trees.addDiscFile("/a/b/c/old", "x");
  makeDelegate();
  create("/a/b/c/new", "text");
  EXPECT_EQ(contentOf(overlay("/a/b/c/new")), "text");
  EXPECT_FALSE(exists(overlay("/a/b/c/old")));
  EXPECT_TRUE(isVisible("/a/b/c/old"));
}

TEST_F(BurnFSContent, CreatingOverADiscFileShadowsIt) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  create("/file");
  EXPECT_EQ(delegate->attributesOfItemAtPath("/file", nullptr, nullptr)->status->st_size, 0);
  EXPECT_EQ(delegate->localusedbytes(), 0);
}

TEST_F(BurnFSContent, CreatingOverAnOverlayFileEmptiesIt) {
  makeDelegate();
  create("/file", "text");
  create("/file");
  EXPECT_EQ(contentOf(overlay("/file")), "");
}

TEST_F(BurnFSContent, ACreatedFileHasTheGivenPermissionsAndIsWritableWhileOpen) {
  makeDelegate();
  AttributeChanges attributes;
  attributes.NSFilePosixPermissions = 0444;
  std::unique_ptr<UserData> file;
  ASSERT_TRUE(delegate->createFileAtPath("/file", attributes, &file, nullptr));
  EXPECT_EQ(statusOf(overlay("/file")).st_mode & 07777, 0444U);
  EXPECT_EQ(write("/file", file.get(), "text", 0), 4);
}

TEST_F(BurnFSContent, CreatingNeverWritesThroughALink) {
  makeDelegate();
  writeFile(trees.root() + "/precious", "precious");
  ASSERT_EQ(symlink((trees.root() + "/precious").c_str(), overlay("/link").c_str()), 0);
  std::unique_ptr<UserData> file;
  PosixError error;
  EXPECT_FALSE(delegate->createFileAtPath("/link", {}, &file, &error));
  EXPECT_FALSE(error.isSet());
  EXPECT_EQ(contentOf(trees.root() + "/precious"), "precious");
}

TEST_F(BurnFSContent, CreatingWhereADirectoryStandsFailsWithoutAnError) {
  makeDelegate();
  ASSERT_TRUE(delegate->createDirectoryAtPath("/directory", {}, nullptr));
  std::unique_ptr<UserData> file;
  PosixError error;
  EXPECT_FALSE(delegate->createFileAtPath("/directory", {}, &file, &error));
  EXPECT_FALSE(error.isSet());
}

TEST_F(BurnFSContent, CreatingADeletedDiscFileMakesItVisibleAgainFromTheOverlay) {
  trees.addDiscFile("/file", "disc");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  ASSERT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  create("/file", "new");
  const auto attributes = delegate->attributesOfItemAtPath("/file", nullptr, nullptr);
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->origin, ItemOrigin::Writable);
  EXPECT_EQ(attributes->status->st_size, 3);
}

TEST_F(BurnFSContent, TheOpenModeIsIgnored) {
  trees.addDiscFile("/disc", "disc");
  makeDelegate();
  create("/overlay", "text");
  for (const int mode : {O_RDONLY, O_WRONLY, O_RDWR, O_WRONLY | O_TRUNC}) {
    std::unique_ptr<UserData> file;
    ASSERT_TRUE(delegate->openFileAtPath("/overlay", mode, &file, nullptr));
    EXPECT_TRUE(file->isWritable());
    ASSERT_TRUE(delegate->openFileAtPath("/disc", mode, &file, nullptr));
    EXPECT_FALSE(file->isWritable());
  }
  EXPECT_EQ(contentOf(overlay("/overlay")), "text");
  EXPECT_FALSE(exists(overlay("/disc")));
}

TEST_F(BurnFSContent, WithoutADiscWhatTheOverlayLacksCannotBeOpened) {
  makeDelegateOver(std::nullopt, {700, 0});
  std::unique_ptr<UserData> file;
  EXPECT_FALSE(delegate->openFileAtPath("/gone", 0, &file, nullptr));
  EXPECT_THAT(log, ElementsAre("Error! Openfile did not find file! /gone"));
}

TEST_F(BurnFSContent, AWriteIsAnnouncedWhenItHasBeenCountedAndOnTheSameThread) {
  makeDelegate();
  create("/file");
  int64_t counted = -1;
  std::thread::id thread;
  NotificationCenter::defaultCenter().addObserver(this, kKelvaneFSSizeChanged, delegate.get(),
                                                  [&](const Notification&) {
                                                    counted = delegate->localusedbytes();
                                                    thread = std::this_thread::get_id();
                                                  });
  write("/file", open("/file").get(), "12345", 0);
  EXPECT_EQ(counted, 5);
  EXPECT_EQ(thread, std::this_thread::get_id());
  ASSERT_TRUE(delegate->removeItemAtPath("/file", nullptr));
  EXPECT_EQ(counted, 0);
}

TEST_F(BurnFSContent, AWriteThatFailsIsNeitherCountedNorAnnounced) {
  makeDelegate();
  create("/file");
  const auto file = open("/file");
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit old = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  rlimit none = old;
  none.rlim_cur = 0;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
  PosixError error;
  EXPECT_EQ(write("/file", file.get(), "text", 0, &error), 0);
  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_EQ(error.code, EFBIG);
  EXPECT_EQ(delegate->localusedbytes(), 0);
  EXPECT_EQ(sizeChanges, 0);
}

TEST_F(BurnFSContent, ACreationThatFailsHasShownThePathAndMadeTheParent) {
  trees.addDiscDirectory("/gone");
  makeDelegate();
  ASSERT_TRUE(delegate->removeItemAtPath("/gone", nullptr));
  mkdir(overlay("/gone").c_str(), 0755);
  std::unique_ptr<UserData> file;
  PosixError error;
  EXPECT_FALSE(delegate->createFileAtPath("/gone", {}, &file, &error));
  EXPECT_FALSE(error.isSet());
  EXPECT_TRUE(isVisible("/gone"));
  EXPECT_FALSE(delegate->createFileAtPath("/new/" + std::string(256, 'n'), {}, &file, &error));
  EXPECT_FALSE(error.isSet());
  EXPECT_TRUE(exists(overlay("/new")));
  EXPECT_EQ(file, nullptr);
}

TEST_F(BurnFSContent, WithoutSpaceEverythingButCreatingAndWritingFilesStillWorks) {
  trees.addDiscFile("/docs/file", "disc");
  makeDelegateWithFree(4095);
  EXPECT_TRUE(delegate->createDirectoryAtPath("/directory", {}, nullptr));
  EXPECT_TRUE(delegate->createSymbolicLinkAtPath("/link", "target", nullptr));
  EXPECT_TRUE(delegate->moveItemAtPath("/docs", "/directory/docs", nullptr));
  EXPECT_EQ(contentOf(overlay("/directory/docs/file")), "disc");
  EXPECT_EQ(sizeChanges, 0);
  EXPECT_TRUE(delegate->removeItemAtPath("/filler", nullptr));
  create("/file", "there is space again");
  EXPECT_TRUE(isVisible("/file"));
}

}  // namespace
}  // namespace kelvane::tests

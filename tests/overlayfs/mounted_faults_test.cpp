// SPDX-License-Identifier: GPL-2.0-or-later
// What a program on the volume is told when something below breaks or runs out, and that the volume
// is as it was before and works on.
#include <dirent.h>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>
#include <utility>

#include "overlayfs/faulty_tree.h"
#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

namespace fs = std::filesystem;

int errnoOf(int status) {
  return status < 0 ? errno : 0;
}

/// None where not even the list of them can be opened.
std::optional<size_t> openDescriptors() {
  std::error_code error;
  const fs::directory_iterator list("/proc/self/fd", error);
  if (error) return std::nullopt;
  return static_cast<size_t>(std::distance(begin(list), end(list)));
}

// The folder of temporary files is a file system of its own, of a megabyte and few files.
class MountedOnLittleSpace : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    if (geteuid() != 0) GTEST_SKIP() << "only root can mount a small file system";
    temporary_ = trees.root() + "/tmp";
    ASSERT_EQ(::mount("tmpfs", temporary_.c_str(), "tmpfs", 0, "size=1m,nr_inodes=64"), 0);
    trees.addDiscFile("/small", "small");
    trees.addDiscFile("/big", std::string(2 << 20, 'b'));
    trees.addDiscFile("/docs/one", "one");
    trees.addDiscFile("/docs/two", std::string(2 << 20, '2'));
    mount();
  }
  void TearDown() override {
    volume.reset();
    if (!temporary_.empty()) umount2(temporary_.c_str(), MNT_DETACH);
  }
  void fill() { shFails("cat /dev/zero > filler"); }
  void useUpFiles() { shFails("for n in $(seq 100); do : > many$n || exit 1; done"); }

  std::string temporary_;
};

TEST_F(MountedOnLittleSpace, AWriterIsToldAndKeepsWhatWasWritten) {
  EXPECT_NE(shFails("head -c 3000000 /dev/zero > big2").find("No space left"), std::string::npos);
  EXPECT_GT(statusOf(at("/big2")).st_size, 500000);
  sh("rm big2 && echo fits > new && cat new small");
}

TEST_F(MountedOnLittleSpace, WhoMakesAFileIsToldAndNothingIsMade) {
  useUpFiles();
  EXPECT_EQ(errnoOf(open(at("/new").c_str(), O_WRONLY | O_CREAT, 0644)), ENOSPC);
  EXPECT_EQ(errnoOf(mkdir(at("/made").c_str(), 0755)), ENOSPC);
  EXPECT_EQ(errnoOf(mknod(at("/node").c_str(), S_IFREG | 0644, 0)), ENOSPC);
  EXPECT_EQ(errnoOf(open(at("/docs/new").c_str(), O_WRONLY | O_CREAT, 0644)), ENOSPC);
  EXPECT_EQ(errnoOf(open(at("/small").c_str(), O_WRONLY | O_TRUNC)), ENOSPC);
  EXPECT_EQ(contentOf(at("/small")), "small");
  for (const std::string name : {"/new", "/made", "/node"}) EXPECT_FALSE(exists(at(name))) << name;
  sh("rm many* && echo fits > new && mkdir made");
}

TEST_F(MountedOnLittleSpace, AnItemOfTheDiscThatCannotBeMovedStaysWhereItIs) {
  EXPECT_EQ(errnoOf(rename(at("/big").c_str(), at("/moved").c_str())), ENOSPC);
  EXPECT_EQ(errnoOf(rename(at("/docs").c_str(), at("/elsewhere").c_str())), ENOSPC);
  EXPECT_EQ(sh("ls -A . docs"), ".:\nbig\ndocs\nsmall\n\ndocs:\none\ntwo\n");
  EXPECT_TRUE(namesIn(trees.overlay()).empty()) << "half a copy is left";
  EXPECT_EQ(contentOf(at("/docs/one")), "one");
  sh("mv small moved && cat moved");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(contentOf(trees.hideListFile()), trees.overlay() + "/small");
}

TEST_F(MountedOnLittleSpace, AFileOfTheDiscThatCannotReplaceAnotherLeavesThatAlone) {
  sh("echo mine > own");
  EXPECT_EQ(errnoOf(rename(at("/big").c_str(), at("/own").c_str())), ENOSPC);
  EXPECT_EQ(contentOf(at("/own")), "mine\n");
  EXPECT_EQ(statusOf(at("/big")).st_size, 2 << 20);
  EXPECT_EQ(runShell("find " + trees.overlay() + " -name '.kelvanefs*'").output, "");
}

TEST_F(MountedOnLittleSpace, ItemsCanBeDeletedWhereNothingCanBeWritten) {
  fill();
  useUpFiles();
  sh("rm small docs/one && rm -r docs && rm filler");
  EXPECT_FALSE(exists(at("/docs")));
}

TEST_F(MountedOnLittleSpace, AHideListThatFitsIsWhole) {
  sh("rm small");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_TRUE(volume->delegate().hideListIsWhole());
}

TEST_F(MountedOnLittleSpace, AHideListThatDoesNotFitIsNotLeftInPartAndTheDelegateSaysSo) {
  sh("rm small && rm docs/one");
  fill();
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_FALSE(volume->delegate().hideListIsWhole());
  EXPECT_FALSE(exists(trees.hideListFile()));
}

TEST_F(MountedOnLittleSpace, WherePlaceholdersCannotBeMadeTheDelegateSaysSo) {
  sh("rm small && rm docs/one");
  useUpFiles();
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_FALSE(volume->delegate().hideListIsWhole());
}

class MountedWithFewDescriptors : public MountedOverlay {
 protected:
  void SetUp() override {
    getrlimit(RLIMIT_NOFILE, &usual_);
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/docs/file", "disc");
    mount();
    before_ = openDescriptors().value_or(0);
    sh("echo own > own");
    awaitReleases();
  }
  void TearDown() override { setrlimit(RLIMIT_NOFILE, &usual_); }
  /// The volume may open some twenty files from now on.
  void allowFewDescriptors() {
    rlimit few = usual_;
    few.rlim_cur = before_ + 20;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  /// Runs a program in Python that may open as many files as the machine allows, and has the list
  /// `held` to hold them, and the function `fill` to hold all that the volume can open.
  void python(const std::string& program) {
    sh("cat > ../held.py <<'END'\n"
       "import errno, os, resource\n"
       "hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]\n"
       "resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, 4096), hard))\n"
       "held = []\n"
       "def number(function, *arguments):\n"
       "    try:\n"
       "        function(*arguments)\n"
       "        return 0\n"
       "    except OSError as error:\n"
       "        return error.errno\n"
       "def fill(name, flags=os.O_RDONLY):\n"
       "    for _ in range(200):\n"
       "        if code := number(lambda: held.append(os.open(name, flags))):\n"
       "            return code\n"
       "    return 0\n" +
       program +
       "\nEND\n"
       "python3 ../held.py");
    awaitReleases();
  }
  /// The kernel says that a file was closed a moment later than the program has gone on.
  void awaitReleases() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (openDescriptors().value_or(before_ + 1) > before_) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "a descriptor was leaked";
      std::this_thread::yield();
    }
  }

  size_t before_ = 0;
  rlimit usual_ = {};
};

TEST_F(MountedWithFewDescriptors, WhoOpensOneTooManyIsToldAndTheVolumeGoesOn) {
  allowFewDescriptors();
  python(
      "assert fill('docs/file') == errno.EMFILE\n"
      "assert 5 < len(held) < 40, len(held)\n"
      "assert number(os.open, 'new', os.O_CREAT | os.O_WRONLY) == errno.EMFILE\n"
      "assert number(os.open, 'own', os.O_RDWR) == errno.EMFILE\n"
      "assert number(os.rename, 'docs/file', 'moved') == errno.EMFILE\n"
      "assert os.pread(held[-1], 10, 0) == b'disc'\n"
      "assert os.stat('docs/file').st_size == 4\n"
      "os.close(held.pop())\n"
      "os.close(os.open('own', os.O_RDWR))");
  EXPECT_EQ(sh("ls -A . docs"), ".:\ndocs\nown\n\ndocs:\nfile\n");
  sh("echo more >> own && echo new > new && mv docs/file moved && cat moved");
  awaitReleases();
}

TEST_F(MountedWithFewDescriptors, ADirectoryThatCannotBeListedIsNotTakenForAnEmptyOne) {
  allowFewDescriptors();
  python(
      "assert fill('docs/file') == errno.EMFILE\n"
      "assert number(os.listdir, 'docs') == errno.EMFILE\n"
      "assert number(os.rmdir, 'docs') == errno.EMFILE\n"
      "assert number(os.rename, 'docs', 'elsewhere') == errno.EMFILE");
  EXPECT_EQ(sh("ls -A . docs"), ".:\ndocs\nown\n\ndocs:\nfile\n");
}

class MountedWithoutPermission : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    if (geteuid() == 0) GTEST_SKIP() << "permissions do not stop root";
    mount();
    sh("mkdir closed && echo x > closed/file && chmod 0 closed");
  }
};

TEST_F(MountedWithoutPermission, AClosedDirectoryIsNotTakenForAnEmptyOne) {
  EXPECT_NE(shFails("ls closed").find("Permission denied"), std::string::npos);
  EXPECT_EQ(errnoOf(rmdir(at("/closed").c_str())), EACCES);
  ASSERT_EQ(mkdir(at("/other").c_str(), 0755), 0);
  EXPECT_EQ(errnoOf(rename(at("/other").c_str(), at("/closed").c_str())), EACCES);
  EXPECT_EQ(sh("chmod 755 closed && cat closed/file"), "x\n");
}

TEST_F(MountedWithoutPermission, WhatStandsInAClosedDirectoryIsNotMissing) {
  EXPECT_EQ(errnoOf(open(at("/closed/file").c_str(), O_RDONLY)), EACCES);
  EXPECT_EQ(errnoOf(open(at("/closed/new").c_str(), O_WRONLY | O_CREAT, 0644)), EACCES);
}

class MountedOnVanishedFolder : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/docs/file", "disc");
    trees.addDiscFile("/docs/other", "other");
    mount();
    sh("echo own > own && rm docs/other");
    held_ = open(at("/own").c_str(), O_RDWR);
    fs::remove_all(trees.overlay());
  }
  void TearDown() override { close(held_); }

  int held_ = -1;
};

TEST_F(MountedOnVanishedFolder, TheDiscIsStillThereAndOpenFilesAreToo) {
  EXPECT_EQ(sh("ls -A . docs"), ".:\ndocs\n\ndocs:\nfile\n");
  EXPECT_EQ(contentOf(at("/docs/file")), "disc");
  char buffer[8] = {};
  EXPECT_EQ(pread(held_, buffer, sizeof(buffer), 0), 4);
  EXPECT_EQ(pwrite(held_, "OWN", 3, 0), 3);
  EXPECT_FALSE(exists(at("/own")) && contentOf(at("/own")) == "own\n");
}

TEST_F(MountedOnVanishedFolder, NewFilesGoToANewFolderThatIsItsOwnersAlone) {
  const mode_t before = umask(0);
  sh("echo new > new && mkdir -p a/b && mv docs/file a/b/");
  umask(before);
  EXPECT_EQ(contentOf(trees.overlay() + "/new"), "new\n");
  EXPECT_EQ(statusOf(trees.overlay()).st_mode & 07777, 0700U);
  EXPECT_EQ(contentOf(at("/a/b/file")), "disc");
}

TEST_F(MountedOnVanishedFolder, ADirectoryMadeFirstGoesToAFolderThatIsItsOwnersAlone) {
  const mode_t before = umask(0);
  sh("mkdir made");
  umask(before);
  EXPECT_EQ(statusOf(trees.overlay()).st_mode & 07777, 0700U);
}

TEST_F(MountedOnVanishedFolder, TheUnmountWritesTheHideList) {
  close(std::exchange(held_, -1));
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(contentOf(trees.hideListFile()), trees.overlay() + "/docs/other");
  EXPECT_TRUE(exists(trees.overlay() + "/docs/other"));
  EXPECT_TRUE(volume->delegate().hideListIsWhole());
}

// The disc cannot be read everywhere.
class MountedOverScratchedDisc : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    content_.resize(1 << 20);
    for (size_t at = 0; at < content_.size(); ++at) content_[at] = static_cast<char>(at % 251);
    const std::string source = trees.root() + "/source";
    fs::create_directories(source + "/docs/unlisted");
    for (const std::string name : {"/good", "/scratched", "/docs/good", "/docs/scratched"}) {
      writeFile(source + name, content_);
    }
    writeFile(source + "/lost", "x");
    writeFile(source + "/docs/unlisted/file", "x");
    disc_.emplace(source, trees.disc());
    ASSERT_TRUE(disc_->isMounted());
    volume = std::make_unique<MountedVolume>(trees, OverlayInfo{700, 100});
    ASSERT_TRUE(volume->waitUntilMounted()) << volume->failure();
  }
  void TearDown() override {
    volume.reset();
    disc_.reset();
  }
  void expectNothingChanged() {
    EXPECT_EQ(sh("ls -A 2>/dev/null; ls -A docs"),
              "docs\ngood\nscratched\ngood\nscratched\nunlisted\n");
    EXPECT_TRUE(namesIn(trees.overlay()).empty());
    ASSERT_TRUE(volume->unmountAndWait());
    EXPECT_EQ(contentOf(trees.hideListFile()), "");
  }

  std::string content_;
  std::optional<FaultyTree> disc_;
};

TEST_F(MountedOverScratchedDisc, WhatCannotBeReadIsAnErrorAndNoOtherBytes) {
  const int file = open(at("/scratched").c_str(), O_RDONLY);
  ASSERT_GE(file, 0);
  posix_fadvise(file, 0, 0, POSIX_FADV_RANDOM);  // Read what is asked for and no more.
  std::string buffer(4096, '?');
  EXPECT_EQ(pread(file, buffer.data(), 4096, 8192), 4096);
  EXPECT_EQ(buffer, content_.substr(8192, 4096));
  buffer.assign(4096, '?');
  for (const off_t offset : {FaultyTree::kReadableBytes, off_t{700000}, off_t{(1 << 20) - 4096}}) {
    EXPECT_EQ(pread(file, buffer.data(), 4096, offset), -1) << offset;
    EXPECT_EQ(errno, EIO) << offset;
    EXPECT_EQ(buffer, std::string(4096, '?')) << offset;
  }
  close(file);
}

TEST_F(MountedOverScratchedDisc, ProgramsThatReadToTheEndAreTold) {
  EXPECT_NE(shFails("cat scratched > ../read").find("Input/output error"), std::string::npos);
  const std::string read = contentOf(trees.root() + "/Volumes/read");
  EXPECT_LE(read.size(), static_cast<size_t>(FaultyTree::kReadableBytes));
  EXPECT_EQ(read, content_.substr(0, read.size()));
  EXPECT_EQ(contentOf(at("/good")), content_);
}

TEST_F(MountedOverScratchedDisc, AFileThatCannotBeReadIsNotMovedAndNotHidden) {
  EXPECT_EQ(errnoOf(rename(at("/scratched").c_str(), at("/moved").c_str())), EIO);
  EXPECT_FALSE(exists(at("/moved")));
  expectNothingChanged();
}

TEST_F(MountedOverScratchedDisc, ATreeThatCannotBeReadWholeIsNotMovedAndNotHidden) {
  EXPECT_EQ(errnoOf(rename(at("/docs").c_str(), at("/moved").c_str())), EIO);
  EXPECT_FALSE(exists(at("/moved")));
  expectNothingChanged();
}

TEST_F(MountedOverScratchedDisc, ADirectoryThatCannotBeListedIsNotTakenForAnEmptyOne) {
  EXPECT_NE(shFails("ls docs/unlisted").find("Input/output error"), std::string::npos);
  EXPECT_EQ(errnoOf(rmdir(at("/docs/unlisted").c_str())), EIO);
  EXPECT_EQ(errnoOf(rename(at("/docs/unlisted").c_str(), at("/moved").c_str())), EIO);
  expectNothingChanged();
}

TEST_F(MountedOverScratchedDisc, AnItemOfWhichNothingCanBeReadIsNotMissing) {
  EXPECT_EQ(errnoOf(open(at("/lost").c_str(), O_RDONLY)), EIO);
  struct stat status = {};
  EXPECT_EQ(errnoOf(stat(at("/lost").c_str(), &status)), EIO);
  EXPECT_EQ(errnoOf(stat(at("/nowhere").c_str(), &status)), ENOENT);
}

TEST_F(MountedOverScratchedDisc, AScratchedFileCanBeReplacedAndDeleted) {
  sh("echo new > scratched && rm docs/scratched && mv good docs/scratched");
  EXPECT_EQ(contentOf(at("/scratched")), "new\n");
  EXPECT_EQ(contentOf(at("/docs/scratched")), content_);
}

}  // namespace
}  // namespace kelvane::tests

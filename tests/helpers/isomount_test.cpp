// SPDX-License-Identifier: GPL-2.0-or-later
// The mount as the kernel and other programs see it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <thread>

#include "helpers/file_tree.h"
#include "helpers/image_composer.h"
#include "helpers/isomount_fixture.h"
#include "helpers/isovolume/iso_volume.h"
#include "helpers/workshop.h"

namespace kelvane::test {
namespace {

TEST_F(IsoMount, ShowsTheSourceTree) {
  NEEDS_FUSE();
  for (const char* name : {"plain.txt", "Größe ändern.txt", "[brackets] (1)", "two  spaces"}) {
    writeFile(tree() / name, std::string("content of ") + name);
  }
  writeFile(tree() / std::string(255, 'm'), "255");
  writeFile(tree() / "empty", "");
  writeFile(tree() / "large", std::string(3000000, 'y') + "end");
  fs::create_directories(tree() / "1/2/3/4/5/6/7/8/9/10");
  writeFile(tree() / "1/2/3/4/5/6/7/8/9/10/deep", "deep");
  fs::create_directory(tree() / "empty directory");
  fs::create_symlink("/absolute/target", tree() / "absolute link");
  fs::create_symlink("1/2", tree() / "relative link");
  fs::permissions(tree() / "plain.txt", fs::perms(0640));
  setModificationTime(tree() / "plain.txt", 951782400);
  build({"-R", "-J", "-joliet-long"});
  mustMount();
  EXPECT_EQ(differences(treeOfDirectory(mountPoint()), treeOfDirectory(tree())), "");
  EXPECT_EQ(differences(treeOfDirectory(mountPoint()), treeOfDirectory(tree())), "")
      << "from the kernel's caches";
}

TEST_F(IsoMount, IsInTheMountTableAsADisc) {
  NEEDS_FUSE();
  build();
  mustMount({"--fsname", "/dev/kv0s0"});
  const std::optional<std::string> line = mountLine(mountPoint());
  ASSERT_TRUE(line);
  EXPECT_THAT(*line, testing::HasSubstr(" - fuse.cd9660 /dev/kv0s0 "));
  EXPECT_THAT(*line, testing::HasSubstr(" ro,nosuid,nodev"));
  EXPECT_THAT(*line, testing::HasSubstr("default_permissions"));
}

TEST_F(IsoMount, NameInTheMountTableMayContainCommas) {
  NEEDS_FUSE();
  build();
  mustMount({"--fsname", "/dev/a,b\\c"});
  EXPECT_THAT(mountLine(mountPoint()).value_or(""), testing::HasSubstr("/dev/a,b\\134c"));
}

TEST_F(IsoMount, CannotBeWritten) {
  NEEDS_FUSE();
  writeFile(tree() / "file", "x");
  build();
  mustMount();
  EXPECT_EQ(open((mountPoint() / "file").c_str(), O_WRONLY), -1);
  EXPECT_EQ(errno, EROFS);
  EXPECT_EQ(mkdir((mountPoint() / "new").c_str(), 0700), -1);
  EXPECT_EQ(errno, EROFS);
}

TEST_F(IsoMount, WhatIsNotThereIsNotFoundAgainAndAgain) {
  NEEDS_FUSE();
  build();
  mustMount();
  struct stat status = {};
  for (int attempt = 0; attempt < 3; ++attempt) {
    EXPECT_EQ(stat((mountPoint() / "nothing").c_str(), &status), -1);
    EXPECT_EQ(errno, ENOENT);
  }
}

TEST_F(IsoMount, BigDirectoryIsListedWhole) {
  NEEDS_FUSE();
  constexpr int kFiles = 20000;
  for (int index = 0; index < kFiles; ++index) {
    writeFile(tree() / (std::to_string(index) + " is its number"), "");
  }
  build();
  mustMount();
  EXPECT_EQ(differences(treeOfDirectory(mountPoint()), treeOfDirectory(tree())), "");
}

TEST_F(IsoMount, CountsTheWholeDiscAsUsed) {
  NEEDS_FUSE();
  writeFile(tree() / "file", std::string(50000, 'x'));
  build();
  const std::string first = readFile(image());
  constexpr std::uint32_t kStart = 11702;
  mustRun({"genisoimage", "-quiet", "-R", "-M", image(), "-C", "0," + std::to_string(kStart), "-o",
           workshop_ / "second.iso", tree()});
  const std::string second = readFile(workshop_ / "second.iso");
  {
    std::fstream disc(image(), std::ios::binary | std::ios::in | std::ios::out);
    disc.seekp(std::streamoff{kStart} * 2048);
    // The drive has room behind the session.
    disc << second << std::string(1000 * 2048, '\0');
  }
  std::string error;
  const auto source = isovolume::FileBlockSource::open(image(), &error);
  const auto volume = isovolume::IsoVolume::open(*source, {kStart}, &error);
  ASSERT_TRUE(volume) << error;

  mustMount({"--session", std::to_string(kStart)});
  struct statvfs status = {};
  ASSERT_EQ(statvfs(mountPoint().c_str(), &status), 0);
  EXPECT_EQ(status.f_frsize, 2048u);
  EXPECT_EQ(status.f_blocks, kStart + volume->volumeSpaceSize());
  EXPECT_EQ(status.f_bfree, 0u);
  EXPECT_EQ(status.f_bavail, 0u);
  EXPECT_EQ(status.f_namemax, 255u);
  EXPECT_NE(status.f_flag & ST_RDONLY, 0u);
}

TEST_F(IsoMount, CountsNoMoreBlocksThanTheDiscHas) {
  NEEDS_FUSE();
  ImageComposer composer = composeVolume(100, Extension::none, {});
  composer.putBytes(16, 80, {0xFF, 0xFF, 0xFF, 0xFF});
  composer.writeSparse(image());
  mustMount();
  struct statvfs status = {};
  ASSERT_EQ(statvfs(mountPoint().c_str(), &status), 0);
  EXPECT_EQ(status.f_blocks, 100u);
}

TEST_F(IsoMount, FileInSectionsOfFourGigabytesIsReadAcrossThem) {
  NEEDS_FUSE();
  constexpr std::uint32_t kFirstLength = 0xFFFFF800;
  constexpr std::uint32_t kSecondBlock = 40 + kFirstLength / 2048;
  ImageComposer composer = composeVolume(
      kSecondBlock + 100, Extension::none,
      {{.identifier = "HUGE.;1", .extent = 40, .length = kFirstLength, .flags = kContinuedFlag},
       {.identifier = "HUGE.;1", .extent = kSecondBlock + 50, .length = 100000}});
  composer.putText(kSecondBlock - 1, std::string(2044, '-') + "last");
  composer.putText(kSecondBlock + 50, "next");
  composer.writeSparse(image());
  mustMount();
  const int file = open((mountPoint() / "huge").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  std::string border(8, '\0');
  EXPECT_EQ(pread(file, border.data(), 8, off_t{kFirstLength} - 4), 8);
  EXPECT_EQ(border, "lastnext");
  EXPECT_EQ(lseek(file, 0, SEEK_END), off_t{kFirstLength} + 100000);
  EXPECT_EQ(pread(file, border.data(), 8, off_t{kFirstLength} + 100000 - 5), 5);
  close(file);
}

TEST_F(IsoMount, SourceThatShrinksGivesReadErrorsAndTheRest) {
  NEEDS_FUSE();
  writeFile(tree() / "a first file", std::string(10000, 'a'));
  writeFile(tree() / "z last file", std::string(4000000, 'z'));
  build();
  mustMount();
  ASSERT_EQ(truncate(image().c_str(), static_cast<off_t>(fs::file_size(image())) - 3000000), 0);
  EXPECT_EQ(readFile(mountPoint() / "a first file"), std::string(10000, 'a'));
  const int file = open((mountPoint() / "z last file").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  char byte = 0;
  EXPECT_EQ(pread(file, &byte, 1, 3999999), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(pread(file, &byte, 1, 0), 1);
  struct stat status = {};
  EXPECT_EQ(fstat(file, &status), 0);
  EXPECT_EQ(status.st_size, 4000000) << "an error is not the file's end";
  close(file);
}

TEST_F(IsoMount, SourceThatGrowsDoesNotDisturb) {
  NEEDS_FUSE();
  writeFile(tree() / "file", std::string(100000, 'x'));
  build();
  mustMount();
  std::ofstream(image(), std::ios::binary | std::ios::app) << std::string(1000000, '\0');
  EXPECT_EQ(differences(treeOfDirectory(mountPoint()), treeOfDirectory(tree())), "");
}

TEST_F(IsoMount, ServingProcessHoldsNothingOfItsStarter) {
  NEEDS_FUSE();
  build();
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe(ends), 0);  // inherited on purpose
  mustMount();
  close(ends[1]);
  char byte = 0;
  EXPECT_EQ(read(ends[0], &byte, 1), 0) << "the end of the pipe is open elsewhere";
  close(ends[0]);
  const std::optional<fs::path> process = processWith(mountPoint());
  ASSERT_TRUE(process);
  const pid_t pid = std::stoi(process->filename());
  EXPECT_EQ(getsid(pid), pid);
  if (geteuid() == 0) {
    EXPECT_EQ(fs::read_symlink(*process / "cwd"), "/");
    for (const char* standard : {"0", "1", "2"}) {
      EXPECT_EQ(fs::read_symlink(*process / "fd" / standard), "/dev/null");
    }
  }
}

TEST_F(IsoMount, ServingProcessHasGivenUpItsRights) {
  NEEDS_FUSE();
  build();
  mustMount();
  const std::optional<fs::path> process = processWith(mountPoint());
  ASSERT_TRUE(process);
  const std::string status = readFile(*process / "status");
  for (const char* set : {"CapInh", "CapPrm", "CapEff", "CapAmb"}) {
    EXPECT_THAT(status, testing::HasSubstr(std::string(set) + ":\t0000000000000000\n"));
  }
  EXPECT_THAT(status, testing::HasSubstr("NoNewPrivs:\t1\n"));
#ifndef __SANITIZE_ADDRESS__
  EXPECT_THAT(status, testing::HasSubstr("Seccomp:\t2\n"));
#endif
  if (geteuid() == 0) {
    EXPECT_THAT(status, testing::Not(testing::HasSubstr("Uid:\t0\t")));
  }
}

TEST_F(IsoMount, OfRootIsOpenToEveryUser) {
  NEEDS_FUSE();
  if (geteuid() != 0) GTEST_SKIP() << "only root may decide this for itself";
  writeFile(tree() / "file", "x");
  build();
  mustMount();
  EXPECT_THAT(mountLine(mountPoint()).value_or(""), testing::HasSubstr("allow_other"));
  fs::permissions(workshop_.path(), fs::perms(0755));
  EXPECT_EQ(mustRun({"setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", "cat",
                     mountPoint() / "file"}),
            "x");
}

TEST_F(IsoMount, WorksUnderLowLimits) {
  NEEDS_FUSE();
  writeFile(tree() / "file", std::string(500000, 'x'));
  build();
  mustRun({"prlimit", "--nofile=12:12", "--core=0:0", kIsoMountProgram, "--source", image(),
           mountPoint()});
  EXPECT_EQ(readFile(mountPoint() / "file"), std::string(500000, 'x'));
}

TEST_F(IsoMount, ServingProcessEndsWhenTheVolumeIsUnmounted) {
  NEEDS_FUSE();
  build();
  mustMount();
  EXPECT_TRUE(processWith(mountPoint()));
  unmount(mountPoint());
  EXPECT_FALSE(mountLine(mountPoint()));
  EXPECT_TRUE(waitFor([&] { return !processWith(mountPoint()); }));
}

TEST_F(IsoMount, ForegroundProcessServesUntilTheVolumeIsUnmounted) {
  NEEDS_FUSE();
  writeFile(tree() / "file", "x");
  build();
  std::vector<std::string> words = {kIsoMountProgram, "--foreground", "--source", image(),
                                    mountPoint()};
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  ASSERT_EQ(posix_spawn(&child, kIsoMountProgram, nullptr, nullptr, arguments.data(), environ), 0);
  EXPECT_TRUE(waitFor([&] { return mountLine(mountPoint()).has_value(); }));
  EXPECT_EQ(readFile(mountPoint() / "file"), "x");
  unmount(mountPoint());
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(IsoMount, RefusesWhatItCannotMountInOneLine) {
  build();
  const auto refusal = [&](const std::vector<std::string>& options) {
    std::vector<std::string> words = {kIsoMountProgram};
    words.insert(words.end(), options.begin(), options.end());
    const RunResult result = run(words);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    return result.errors;
  };
  const std::string disc = image();
  const std::string at = mountPoint();
  const std::string nothing = workshop_ / "nothing";
  writeFile(workshop_ / "small", "no disc");
  writeFile(workshop_ / "noise", std::string(100000, 'n'));
  const std::string small = workshop_ / "small";
  const std::string noise = workshop_ / "noise";

  EXPECT_EQ(refusal({"--source", nothing, at}),
            "isomount: cannot open " + nothing + ": No such file or directory\n");
  EXPECT_EQ(refusal({"--source", small, at}),
            "isomount: " + small + ": too short to hold a volume at block 0\n");
  EXPECT_EQ(refusal({"--source", noise, at}),
            "isomount: " + noise + ": no ISO-9660 volume at block 0\n");
  EXPECT_EQ(refusal({"--source", disc, "--session", "7", at}),
            "isomount: " + disc + ": no ISO-9660 volume at block 7\n");
  EXPECT_EQ(
      refusal({"--source", tree(), at}),
      "isomount: " + tree().string() + " is neither a file nor a block device with a medium\n");
  EXPECT_EQ(refusal({"--source", disc, nothing}),
            "isomount: mount point " + nothing + ": No such file or directory\n");
  EXPECT_EQ(refusal({"--source", disc, noise}),
            "isomount: mount point " + noise + " is not a directory\n");
  EXPECT_FALSE(mountLine(mountPoint()));
}

TEST_F(IsoMount, PrintsTheVolumesNameInsteadOfMountingIt) {
  build({"-R", "-J", "-V", "Ein Name"});
  const RunResult result = run({kIsoMountProgram, "--source", image(), "--print-volume-id"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "Ein Name\n");
}

TEST_F(IsoMount, WrongCommandLineIsToldApart) {
  for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
           {}, {"--source", "x"}, {"--source", "x", "--session", "-1", "y"}, {"--unknown"}}) {
    std::vector<std::string> words = {kIsoMountProgram};
    words.insert(words.end(), options.begin(), options.end());
    const RunResult result = run(words);
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, testing::MatchesRegex("isomount: [^\n]+\n"));
  }
}

}  // namespace
}  // namespace kelvane::test

// SPDX-License-Identifier: GPL-2.0-or-later
// Discs made to do harm, mounted: programs that walk them come to an end and say what is wrong.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "helpers/image_composer.h"
#include "helpers/isomount_fixture.h"

namespace kelvane::test {
namespace {

RecordSpec directoryRecord(const std::string& name, std::uint32_t extent,
                           std::uint32_t length = 2048) {
  return {.identifier = name, .extent = extent, .length = length, .flags = kDirectoryFlag};
}

/// A program that runs longer than this hangs (exit status 124).
RunResult runInTime(std::vector<std::string> words) {
  words.insert(words.begin(), {"timeout", "-s", "KILL", "60"});
  return run(words);
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

class HostileMount : public IsoMount {
 protected:
  void mustMount(const ImageComposer& composer) {
    composer.writeSparse(image());
    IsoMount::mustMount();
  }
  RunResult find() { return runInTime({"find", mountPoint(), "-mindepth", "1"}); }
};

TEST_F(HostileMount, DirectoryLoopsAreToldAndEnd) {
  NEEDS_FUSE();
  ImageComposer composer = composeVolume(60, Extension::none,
                                         {directoryRecord("A", 30),
                                          directoryRecord("UP", kComposedRoot),
                                          {.identifier = "FILE.;1", .extent = 40, .length = 4}});
  composer.putDirectory(30, {directoryRecord("B", 31)});
  composer.putDirectory(31, {directoryRecord("A", 30), directoryRecord("B", 31)});
  composer.putText(40, "text");
  mustMount(composer);
  const RunResult found = find();
  EXPECT_EQ(found.status, 1);
  EXPECT_EQ(linesOf(found.output).size(), 6u) << found.output;
  EXPECT_EQ(linesOf(found.errors).size(), 3u) << found.errors;
  EXPECT_THAT(found.errors, testing::HasSubstr("/up"));
  const RunResult listed = runInTime({"ls", "-R", mountPoint()});
  EXPECT_NE(listed.status, 137);
  EXPECT_THAT(listed.output, testing::HasSubstr("file"));
  EXPECT_EQ(readFile(mountPoint() / "file"), "text");
}

TEST_F(HostileMount, DirectoriesThatMultiplyAreWalkedOnce) {
  NEEDS_FUSE();
  // Each of ten directories has forty entries that lead to the next one: 40^10 paths.
  const auto copies = [](std::uint32_t block) {
    std::vector<RecordSpec> records;
    for (int copy = 0; copy < 40; ++copy) {
      records.push_back(directoryRecord("D" + std::to_string(copy), block));
    }
    return records;
  };
  ImageComposer composer = composeVolume(40, Extension::none, copies(21));
  for (std::uint32_t block = 21; block < 31; ++block) {
    composer.putDirectory(block, copies(block + 1));
  }
  mustMount(composer);
  EXPECT_EQ(linesOf(find().output).size(), 40u * 11);
  EXPECT_EQ(runInTime({"du", "-s", mountPoint()}).status, 1);
}

TEST_F(HostileMount, ContinuationLoopsCostNothing) {
  NEEDS_FUSE();
  const ByteVector loop = susp::continuation(30, 0, 28);
  std::vector<RecordSpec> records;
  for (int index = 0; index < 500; ++index) {
    records.push_back({.identifier = "F" + std::to_string(index) + ".;1",
                       .systemUse = susp::posix(S_IFREG | 0644) +
                                    susp::name("file " + std::to_string(index)) + loop});
  }
  ImageComposer composer = composeVolume(60, Extension::rockRidge, records);
  composer.putBytes(59, 0, {});
  composer.putBytes(58, 0, loop);
  mustMount(composer);
  const RunResult found = find();
  EXPECT_EQ(found.status, 0) << found.errors;
  EXPECT_EQ(linesOf(found.output).size(), 500u);
}

TEST_F(HostileMount, NamesThatLeadElsewhereAreNotThere) {
  NEEDS_FUSE();
  const auto named = [](std::string_view name) {
    return RecordSpec{.identifier = "X.;1",
                      .systemUse = susp::posix(S_IFREG | 0644) + susp::name(name)};
  };
  mustMount(composeVolume(40, Extension::rockRidge,
                          {named(".."), named("../../etc/passwd"), named("/"), named("a/b"),
                           named(std::string_view("a\0b", 3)), named("good")}));
  const RunResult found = find();
  EXPECT_EQ(found.output, (mountPoint() / "good").string() + "\n");
  EXPECT_EQ(found.status, 0) << found.errors;
  struct stat above = {};
  struct stat around = {};
  ASSERT_EQ(stat((mountPoint() / "..").c_str(), &above), 0);
  ASSERT_EQ(stat(mountPoint().parent_path().c_str(), &around), 0);
  EXPECT_EQ(above.st_ino, around.st_ino);
}

TEST_F(HostileMount, WrongLengthsGiveErrorsOfReading) {
  NEEDS_FUSE();
  ImageComposer composer =
      composeVolume(40, Extension::none,
                    {{.identifier = "HUGE.;1", .extent = 30, .length = 0xFFFFFFFF},
                     {.identifier = "BEYOND.;1", .extent = 0xFFFFFFFF, .length = 100},
                     {.identifier = "OVERLAP.;1", .extent = 30, .length = 2048},
                     directoryRecord("NOWHERE", 0xFFFFFF, 0xFFFFFFFF),
                     {.identifier = "GOOD.;1", .extent = 39, .length = 4}});
  composer.putText(30, "shared");
  composer.putText(39, "good");
  mustMount(composer);
  for (const char* name : {"huge", "beyond", "nowhere"}) {
    EXPECT_EQ(runInTime({"cat", mountPoint() / name}).status, 1) << name;
  }
  EXPECT_EQ(find().status, 1) << "one directory cannot be listed";
  EXPECT_EQ(readFile(mountPoint() / "good"), "good");
  EXPECT_EQ(readFile(mountPoint() / "overlap").substr(0, 6), "shared");
  const int file = open((mountPoint() / "huge").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  char bytes[6] = {};
  EXPECT_EQ(pread(file, bytes, 6, 0), 6);
  EXPECT_EQ(std::string(bytes, 6), "shared") << "what is there of it is read";
  EXPECT_EQ(pread(file, bytes, 1, 0xFFFFFF00), -1);
  EXPECT_EQ(errno, EIO);
  close(file);
}

TEST_F(HostileMount, TruncatedDiscShowsWhatItStillHas) {
  NEEDS_FUSE();
  for (int index = 0; index < 20; ++index) {
    writeFile(tree() / ("file" + std::to_string(100 + index)), std::string(50000, 'x'));
  }
  build({"-R", "-J"});
  ASSERT_EQ(truncate(image().c_str(), static_cast<off_t>(fs::file_size(image()) / 2)), 0);
  IsoMount::mustMount();
  EXPECT_EQ(linesOf(find().output).size(), 20u);
  const RunResult everything = runInTime({"sh", "-c", "cat '" + mountPoint().string() + "'/*"});
  EXPECT_EQ(everything.status, 1);
  EXPECT_GE(everything.output.size(), 5 * 50000u);
  EXPECT_THAT(everything.errors, testing::HasSubstr("file119"));
}

}  // namespace
}  // namespace kelvane::test

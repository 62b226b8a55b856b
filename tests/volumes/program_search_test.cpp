// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/launchers/program_search.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "volumes/temporary_prefix.h"

namespace kelvane::launchers {
namespace {

constexpr char kSomeName[] = "kelvane-test-program";
constexpr char kOtherName[] = "kelvane-test-other-program";
constexpr char kNobody[] = "/proc/self/exe";

class ProgramSearchTest : public testing::Test {
 protected:
  std::string makeProgram(const std::string& folder, const std::string& name, mode_t mode = 0755) {
    std::filesystem::create_directories(prefix_.path() + "/" + folder);
    const std::string path = prefix_.path() + "/" + folder + "/" + name;
    std::ofstream(path) << "#!/bin/sh\n";
    chmod(path.c_str(), mode);
    return path;
  }

  std::string folder(const std::string& name) const { return prefix_.path() + "/" + name; }

  test::TemporaryPrefix prefix_;
};

TEST_F(ProgramSearchTest, TheFirstFolderThatHasTheProgramCounts) {
  const std::string first = makeProgram("a", kSomeName);
  makeProgram("b", kSomeName);
  EXPECT_EQ(
      findProgram({kSomeName}, folder("none") + ":" + folder("a") + ":" + folder("b"), kNobody),
      first);
}

TEST_F(ProgramSearchTest, TheFirstNameCountsEvenInALaterFolder) {
  makeProgram("a", kOtherName);
  const std::string preferred = makeProgram("b", kSomeName);
  EXPECT_EQ(findProgram({kSomeName, kOtherName}, folder("a") + ":" + folder("b"), kNobody),
            preferred);
  std::filesystem::remove(preferred);
  EXPECT_EQ(findProgram({kSomeName, kOtherName}, folder("a") + ":" + folder("b"), kNobody),
            folder("a") + "/" + kOtherName);
}

TEST_F(ProgramSearchTest, WhatIsNoExecutableFileIsPassedOver) {
  makeProgram("a", kSomeName, 0644);
  std::filesystem::create_directories(folder("b") + "/" + kSomeName);
  EXPECT_EQ(findProgram({kSomeName}, folder("a") + ":" + folder("b"), kNobody), std::nullopt);
}

TEST_F(ProgramSearchTest, TheLauncherItselfIsNeverFoundAlsoNotThroughALink) {
  const std::string own = makeProgram("own", kSomeName);
  std::filesystem::create_directories(folder("link"));
  std::filesystem::create_symlink(own, folder("link") + "/" + kSomeName);
  EXPECT_EQ(findProgram({kSomeName}, folder("own") + ":" + folder("link"), own), std::nullopt);
}

TEST_F(ProgramSearchTest, RelativeFoldersOfThePathAreNotSearched) {
  makeProgram("a", kSomeName);
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder("a"));
  EXPECT_EQ(findProgram({kSomeName}, ".::", kNobody), std::nullopt);
  std::filesystem::current_path(before);
}

TEST_F(ProgramSearchTest, TheSystemsFolderIsSearchedWhateverThePath) {
  EXPECT_EQ(findProgram({"env"}, "", kNobody), "/usr/bin/env");
}

}  // namespace
}  // namespace kelvane::launchers

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/bundle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kelvane {
namespace {

namespace fs = std::filesystem;

class BundleTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "kvbundleXXXXXX";
    folder_ = mkdtemp(pattern.data());
    fs::create_directories(folder_ / "bin");
    fs::create_directories(folder_ / "libexec/kelvanefs");
    std::ofstream(folder_ / "libexec/kelvanefs/mkisofs") << "#!/bin/sh\n";
  }
  void TearDown() override {
    unsetenv("KELVANEFS_EXECUTABLE");
    fs::remove_all(folder_);
  }
  void runFrom(const fs::path& program) { setenv("KELVANEFS_EXECUTABLE", program.c_str(), 1); }

  fs::path folder_;
};

TEST_F(BundleTest, AuxiliaryProgramsLieBesideTheProgramsFolder) {
  runFrom(folder_ / "bin/kelvanefs");
  EXPECT_EQ(Bundle::mainBundle().pathForAuxiliaryExecutable("mkisofs"),
            (folder_ / "libexec/kelvanefs/mkisofs").string());
}

TEST_F(BundleTest, AnAuxiliaryProgramFindsTheOthersBesideItself) {
  runFrom(folder_ / "libexec/kelvanefs/growisofs");
  EXPECT_EQ(Bundle::mainBundle().pathForAuxiliaryExecutable("mkisofs"),
            (folder_ / "libexec/kelvanefs/mkisofs").string());
}

TEST_F(BundleTest, AMissingProgramOrResourceIsNone) {
  runFrom(folder_ / "bin/kelvanefs");
  EXPECT_FALSE(Bundle::mainBundle().pathForAuxiliaryExecutable("nothing").has_value());
  EXPECT_FALSE(Bundle::mainBundle().pathForResource("nothing", "png").has_value());
}

TEST_F(BundleTest, TheVersionHasThreeNumbers) {
  const std::string version = Bundle::mainBundle().shortVersionString();
  EXPECT_EQ(std::count(version.begin(), version.end(), '.'), 2) << version;
}

}  // namespace
}  // namespace kelvane

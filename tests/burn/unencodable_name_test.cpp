// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/unencodable_name.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "foundation/temporary_folder.h"

namespace kelvane {
namespace {

class UnencodableName : public ::testing::Test {
 protected:
  void write(const std::string& path) {
    const std::filesystem::path file = folder_.file("overlay" + path);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << "x";
  }
  std::optional<std::string> found(const std::vector<std::string>& deleted = {}) {
    return unencodableName(folder_.file("overlay"), deleted, {});
  }

  testing::TemporaryFolder folder_;
};

TEST_F(UnencodableName, IsFoundHoweverDeepItIs) {
  write("/a/ä/ok €");
  EXPECT_EQ(found(), std::nullopt);
  write("/a/ä/bad \xff");
  EXPECT_EQ(found(), "/a/ä/bad \xff");
}

TEST_F(UnencodableName, IsALatin1UmlautAndACharacterThatIsCutOff) {
  for (const std::string name : {"/M\xfcller", "/x\xc3", "/\xed\xa0\x80"}) {
    write(name);
    EXPECT_EQ(found(), name);
    std::filesystem::remove(folder_.file("overlay" + name));
  }
}

TEST_F(UnencodableName, DoesNotCountWhereItWasDeleted) {
  write("/bad \xff");
  EXPECT_EQ(found({"/other", "/bad \xff"}), std::nullopt);
}

TEST_F(UnencodableName, IsNotLookedForWhereNobodyWantsToKnow) {
  write("/bad \xff");
  std::stop_source source;
  source.request_stop();
  EXPECT_EQ(unencodableName(folder_.file("overlay"), {}, source.get_token()), std::nullopt);
}

}  // namespace
}  // namespace kelvane

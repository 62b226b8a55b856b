// SPDX-License-Identifier: GPL-2.0-or-later
// The size of the volume in the image of a further session, as mkisofs makes it.
#include "burn/volume_space.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "foundation/temporary_folder.h"

namespace kelvane {
namespace {

constexpr uint32_t kStart = 11702;

class VolumeSpace : public ::testing::Test {
 protected:
  VolumeSpace() {
    std::filesystem::create_directory(folder_.file("tree"));
    std::ofstream(folder_.file("tree/file")) << "content";
    run("mkisofs -quiet -r -J -o " + image("first") + " " + folder_.file("tree"));
    run("mkisofs -quiet -r -J -M " + image("first") + " -C 0," + std::to_string(kStart) + " -o " +
        image("second") + " " + folder_.file("tree"));
  }

  std::string image(const std::string& name) const { return folder_.file(name + ".iso"); }
  static void run(const std::string& command) { EXPECT_EQ(std::system(command.c_str()), 0); }

  /// The sizes in the primary and in the Joliet descriptor, in both byte orders.
  std::vector<uint32_t> sizesIn(const std::string& name) const {
    std::ifstream file(image(name), std::ios::binary);
    std::vector<uint32_t> sizes;
    for (int block : {16, 17}) {
      unsigned char bytes[8] = {};
      file.seekg(block * 2048 + 80);
      file.read(reinterpret_cast<char*>(bytes), sizeof bytes);
      uint32_t little = 0;
      uint32_t big = 0;
      for (int place = 0; place < 4; ++place) {
        little = little << 8 | bytes[3 - place];
        big = big << 8 | bytes[4 + place];
      }
      sizes.push_back(little);
      sizes.push_back(big);
    }
    return sizes;
  }

 private:
  testing::TemporaryFolder folder_;
};

TEST_F(VolumeSpace, EndsWithTheSessionInEveryDescriptor) {
  const auto blocks = static_cast<uint32_t>(std::filesystem::file_size(image("second")) / 2048);
  const std::vector<uint32_t> before = sizesIn("second");
  EXPECT_LE(before[0], blocks) << "mkisofs counts from the beginning of the session by now";
  ASSERT_TRUE(makeVolumesEndWithSession(image("second"), kStart));
  const std::vector<uint32_t> after = sizesIn("second");
  for (size_t number = 0; number < before.size(); ++number) {
    EXPECT_EQ(after[number], before[number] + kStart) << number;
  }
}

TEST_F(VolumeSpace, IsAllThatChanges) {
  const auto size = std::filesystem::file_size(image("second"));
  std::filesystem::copy_file(image("second"), image("before"));
  ASSERT_TRUE(makeVolumesEndWithSession(image("second"), kStart));
  EXPECT_EQ(std::filesystem::file_size(image("second")), size);
  std::ifstream before(image("before"), std::ios::binary);
  std::ifstream after(image("second"), std::ios::binary);
  int different = 0;
  for (uintmax_t place = 0; place < size; ++place) {
    const bool isSize =
        place >= 16 * 2048 && place < 18 * 2048 && place % 2048 >= 80 && place % 2048 < 88;
    if (before.get() != after.get() && !isSize) ++different;
  }
  EXPECT_EQ(different, 0);
}

TEST_F(VolumeSpace, OfWhatIsNoImageIsNotTouched) {
  EXPECT_FALSE(makeVolumesEndWithSession(image("nothing"), kStart));
  EXPECT_FALSE(std::filesystem::exists(image("nothing")));
  std::ofstream(image("short")) << "no volume";
  EXPECT_FALSE(makeVolumesEndWithSession(image("short"), kStart));
  std::ofstream(image("zeros")) << std::string(100 * 2048, '\0');
  EXPECT_FALSE(makeVolumesEndWithSession(image("zeros"), kStart));
  std::ifstream file(image("zeros"));
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(content, std::string(100 * 2048, '\0'));
}

TEST(SessionStart, IsTheSecondNumberOfTheSessionString) {
  EXPECT_EQ(sessionStartIn("0,11702"), 11702U);
  EXPECT_EQ(sessionStartIn("11702,18604"), 18604U);
  EXPECT_EQ(sessionStartIn("0"), 0U);
  EXPECT_EQ(sessionStartIn(""), 0U);
  EXPECT_EQ(sessionStartIn("0,"), 0U);
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// Sessions that continue others, as genisoimage builds them for a disc of several sessions.
#include <gtest/gtest.h>

#include <fstream>

#include "helpers/file_tree.h"
#include "helpers/isovolume/iso_volume.h"
#include "helpers/workshop.h"

namespace kelvane::test {
namespace {

namespace fs = std::filesystem;
using isovolume::FileBlockSource;
using isovolume::IsoVolume;

class IsoVolumeOfSeveralSessions : public testing::Test {
 protected:
  /// Adds `tree` as a session that starts at `start`.
  void addSession(const fs::path& tree, std::uint32_t start) {
    const std::string session = workshop_ / "session.iso";
    std::vector<std::string> words = {"genisoimage", "-quiet", "-R", "-J", "-o", session};
    if (start != 0) {
      words.insert(words.end(),
                   {"-M", disc(), "-C", std::to_string(last_) + "," + std::to_string(start)});
    }
    words.push_back(tree);
    mustRun(words);
    std::fstream file(disc(), std::ios::binary | std::ios::in | std::ios::out |
                                  (start == 0 ? std::ios::trunc : std::ios::openmode{}));
    file.seekp(std::streamoff{start} * 2048);
    file << readFile(session);
    ASSERT_TRUE(file.good());
    last_ = start;
  }

  FileTree shownAt(std::uint32_t start) {
    std::string error;
    const auto source = FileBlockSource::open(disc(), &error);
    EXPECT_TRUE(source) << error;
    const auto volume = IsoVolume::open(*source, {start}, &error);
    EXPECT_TRUE(volume) << error;
    return volume ? asExtracted(treeOfVolume(*volume)) : FileTree();
  }

  FileTree readByXorrisoAt(std::uint32_t start) {
    const fs::path target = workshop_ / ("extracted" + std::to_string(start));
    mustRun({"xorriso", "-osirrox", "on", "-load", "sbsector", std::to_string(start), "-indev",
             disc(), "-extract", "/", target.string()});
    return asExtracted(treeOfDirectory(target));
  }

  fs::path makeTree(const std::string& name) {
    fs::create_directory(workshop_ / name);
    return workshop_ / name;
  }

  [[nodiscard]] std::string disc() const { return workshop_ / "disc"; }

  Workshop workshop_;
  std::uint32_t last_ = 0;
};

TEST_F(IsoVolumeOfSeveralSessions, EachSessionShowsWhatXorrisoReadsFromIt) {
  const fs::path first = makeTree("first");
  writeFile(first / "kept", "from the first session");
  writeFile(first / "replaced", "old");
  fs::create_directory(first / "directory");
  writeFile(first / "directory" / "old file", "old");
  const fs::path second = makeTree("second");
  writeFile(second / "replaced", "the new content");
  fs::create_directory(second / "directory");
  writeFile(second / "directory" / "new file", "new");
  const fs::path third = makeTree("third");
  writeFile(third / "third file", std::string(100000, '3'));

  constexpr std::uint32_t kSecondStart = 11702;
  constexpr std::uint32_t kThirdStart = 18900;
  addSession(first, 0);
  const FileTree firstAlone = shownAt(0);
  addSession(second, kSecondStart);
  addSession(third, kThirdStart);

  EXPECT_EQ(differences(shownAt(0), firstAlone), "");
  EXPECT_EQ(differences(firstAlone, asExtracted(treeOfDirectory(first))), "");
  const FileTree last = shownAt(kThirdStart);
  for (const char* path :
       {"kept", "replaced", "directory/old file", "directory/new file", "third file"}) {
    EXPECT_TRUE(last.contains(path)) << path;
  }
  EXPECT_EQ(last.at("replaced").size, std::string("the new content").size());
  EXPECT_EQ(differences(shownAt(kSecondStart), readByXorrisoAt(kSecondStart)), "");
  EXPECT_EQ(differences(last, readByXorrisoAt(kThirdStart)), "");
}

TEST_F(IsoVolumeOfSeveralSessions, SessionThatIsNotThereIsRefusedInWords) {
  addSession(makeTree("first"), 0);
  std::string error;
  const auto source = FileBlockSource::open(disc(), &error);
  ASSERT_TRUE(source) << error;
  EXPECT_FALSE(IsoVolume::open(*source, {5}, &error));
  EXPECT_EQ(error, "no ISO-9660 volume at block 5");
  EXPECT_FALSE(IsoVolume::open(*source, {UINT32_MAX}, &error));
  EXPECT_EQ(error, "too short to hold a volume at block 4294967295");
}

}  // namespace
}  // namespace kelvane::test

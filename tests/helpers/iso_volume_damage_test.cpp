// SPDX-License-Identifier: GPL-2.0-or-later
// Real discs, damaged: whatever is wrong, the reader neither crashes nor hangs nor reads elsewhere,
// and shows the rest.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>
#include <set>

#include "helpers/isovolume/iso_volume.h"
#include "helpers/isovolume/memory_block_source.h"
#include "helpers/workshop.h"

namespace kelvane::test {
namespace {

namespace fs = std::filesystem;
using isovolume::BlockSource;
using isovolume::Bytes;
using isovolume::DirectoryEntry;
using isovolume::IsoVolume;
using isovolume::kBlockSize;
using isovolume::MemoryBlockSource;
using isovolume::NodeId;
using isovolume::Status;

using Image = std::vector<std::uint8_t>;

struct Visit {
  std::set<std::string> paths;
  std::uint64_t entries = 0;
};

/// Goes through everything that a volume shows and reads the beginning and the end of each file.
void walk(IsoVolume& volume, NodeId directory, const std::string& prefix, Visit* visit) {
  const auto see = [&](const DirectoryEntry& entry, std::uint64_t) {
    ++visit->entries;
    EXPECT_TRUE(entry.name.find('/') == std::string_view::npos && !entry.name.empty());
    std::string path = prefix + "/" + std::string(entry.name);
    const isovolume::Attributes attributes = volume.attributes(entry.node);
    std::uint8_t bytes[300] = {};
    std::size_t length = 0;
    std::string target;
    if (S_ISREG(attributes.mode)) {
      (void)volume.readFile(entry.node, 0, bytes, &length);
      (void)volume.readFile(entry.node, attributes.size / 2, bytes, &length);
    } else if (S_ISLNK(attributes.mode)) {
      (void)volume.readLink(entry.node, &target);
    } else if (S_ISDIR(attributes.mode)) {
      walk(volume, entry.node, path, visit);
    }
    visit->paths.insert(std::move(path));
    return true;
  };
  (void)volume.readDirectory(directory, 0, see);
}

/// What can be seen of an image; nothing where it is no volume any more.
Visit visitImage(const Image& image) {
  MemoryBlockSource source(image);
  std::string error;
  Visit visit;
  const auto volume = IsoVolume::open(source, {}, &error);
  if (volume) walk(*volume, isovolume::kRootNode, "", &visit);
  return visit;
}

Image buildImage(const std::vector<std::string>& options) {
  const Workshop workshop;
  const fs::path tree = workshop / "tree";
  fs::create_directories(tree / "a/b/c/d/e/f/g/h/i");
  for (int index = 0; index < 60; ++index) {
    writeFile(tree / "a" / ("file number " + std::to_string(index)), "content");
  }
  writeFile(tree / "a/b/c/d/e/f/g/h/i" / "deep", "deep");
  writeFile(tree / std::string(200, 'n'), "long");
  fs::create_symlink("/some/where/../else", tree / "link");
  std::vector<std::string> words = {"genisoimage", "-quiet", "-input-charset",
                                    "utf-8",       "-o",     workshop / "disc.iso"};
  words.insert(words.end(), options.begin(), options.end());
  words.push_back(tree);
  mustRun(words);
  const std::string content = readFile(workshop / "disc.iso");
  return {content.begin(), content.end()};
}

/// Changes a few bytes of the descriptors and directories, where the structure is.
Image damaged(Image image, unsigned seed) {
  std::mt19937 random(seed);
  const std::size_t structure = std::min<std::size_t>(image.size(), 60 * kBlockSize);
  std::uniform_int_distribution<std::size_t> place(16 * kBlockSize, structure - 1);
  std::uniform_int_distribution<unsigned> byte(0, 255);
  const unsigned changes = 1 + seed % 40;
  for (unsigned change = 0; change < changes; ++change) {
    std::uint8_t& target = image[place(random)];
    // Small numbers and bounds break more than noise does.
    constexpr std::uint8_t kNasty[] = {0, 1, 2, 33, 34, 127, 128, 254, 255};
    target = change % 2 == 0 ? kNasty[byte(random) % std::size(kNasty)]
                             : static_cast<std::uint8_t>(byte(random));
  }
  return image;
}

class DamagedVolume : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(DamagedVolume, ChangedBytesNeverLeadAstray) {
  const Image image = buildImage(GetParam());
  const std::uint64_t intact = visitImage(image).entries;
  ASSERT_GT(intact, 60u);
  constexpr unsigned kRuns = 3000;
  unsigned readable = 0;
  for (unsigned seed = 0; seed < kRuns; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::uint64_t entries = visitImage(damaged(image, seed)).entries;
    // Every sector is read as a directory at most once.
    ASSERT_LE(entries, image.size() / 34);
    if (entries >= intact / 2) ++readable;
  }
  EXPECT_GT(readable, kRuns / 4) << "a little damage must not cost the volume";
}

TEST_P(DamagedVolume, TruncatedImageShowsWhatItStillHas) {
  const Image image = buildImage(GetParam());
  for (std::size_t size = 0; size < image.size(); size += kBlockSize / 2) {
    SCOPED_TRACE("size " + std::to_string(size));
    const Visit visit =
        visitImage(Image(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(size)));
    ASSERT_LE(visit.entries, visitImage(image).entries);
  }
}

INSTANTIATE_TEST_SUITE_P(Builders, DamagedVolume,
                         testing::Values(std::vector<std::string>{"-R", "-J", "-joliet-long"},
                                         std::vector<std::string>{"-R", "-D"},
                                         std::vector<std::string>{"-J", "-joliet-long"},
                                         std::vector<std::string>{"-l", "-D"}));

/// A source some of whose blocks cannot be read, as those of a scratched disc.
class ScratchedSource final : public BlockSource {
 public:
  explicit ScratchedSource(Image image) : source_(std::move(image)) {}
  void scratch(std::uint64_t block) { scratched_.insert(block); }
  void clean() { scratched_.clear(); }

  bool readBlocks(std::uint64_t first, std::span<std::uint8_t> out) override {
    const auto next = scratched_.lower_bound(first);
    if (next != scratched_.end() && *next < first + out.size() / kBlockSize) return false;
    return source_.readBlocks(first, out);
  }
  [[nodiscard]] std::uint64_t sizeInBlocks() const override { return source_.sizeInBlocks(); }

 private:
  MemoryBlockSource source_;
  std::set<std::uint64_t> scratched_;
};

std::uint64_t extentOf(const Image& image, std::string_view path) {
  MemoryBlockSource source(image);
  std::string error;
  const auto volume = IsoVolume::open(source, {}, &error);
  NodeId directory = 0;
  EXPECT_EQ(volume->lookupPath(path, &directory), Status::ok);
  // "." of the directory itself tells where it is; the volume's interface does not.
  for (std::uint64_t block = 17; block < source.sizeInBlocks(); ++block) {
    const std::size_t at = block * kBlockSize;
    const std::uint32_t self = static_cast<std::uint32_t>(
        image[at + 2] | image[at + 3] << 8 | image[at + 4] << 16 | image[at + 5] << 24);
    const bool isDirectory = image[at] >= 34 && image[at + 32] == 1 && image[at + 33] == 0;
    if (isDirectory && self == block && image[at + 10 + 1] / 8 > 1) return block;
  }
  return 0;
}

TEST(ScratchedDisc, UnreadableSectorOfADirectoryCostsOnlyItsOwnEntries) {
  const Image image = buildImage({"-R", "-D"});
  const std::uint64_t extent = extentOf(image, "a");  // the only directory of several sectors
  ASSERT_NE(extent, 0u);
  ScratchedSource source(image);
  source.scratch(extent + 1);
  std::string error;
  const auto volume = IsoVolume::open(source, {}, &error);
  ASSERT_TRUE(volume) << error;
  Visit visit;
  walk(*volume, isovolume::kRootNode, "", &visit);
  const std::uint64_t intact = visitImage(image).entries;
  EXPECT_LT(visit.entries, intact);
  EXPECT_GT(visit.entries, intact - 30);
  EXPECT_TRUE(visit.paths.contains("/a/b/c/d/e/f/g/h/i/deep"));
}

TEST(ScratchedDisc, DirectoryThatWasUnreadableIsAskedAgain) {
  const Image image = buildImage({"-R", "-D"});
  ScratchedSource source(image);
  const std::uint64_t extent = extentOf(image, "a");
  std::string error;
  const auto volume = IsoVolume::open(source, {}, &error);
  ASSERT_TRUE(volume) << error;
  for (std::uint64_t block = extent; block < extent + 10; ++block) source.scratch(block);
  NodeId node = 0;
  EXPECT_EQ(volume->lookupPath("a/b", &node), Status::damaged);
  source.clean();
  EXPECT_EQ(volume->lookupPath("a/b", &node), Status::ok);
}

TEST(ScratchedDisc, FirstSectorsThatAreUnreadableAreToldInWords) {
  ScratchedSource source(buildImage({"-R"}));
  for (std::uint64_t block = 0; block < 20; ++block) source.scratch(block);
  std::string error;
  EXPECT_FALSE(IsoVolume::open(source, {}, &error));
  EXPECT_EQ(error, "block 16 cannot be read");
}

TEST(ScratchedDisc, JolietTakesThePlaceOfAnUnreadableRoot) {
  const Image image = buildImage({"-R", "-J", "-joliet-long"});
  MemoryBlockSource intact(image);
  std::string error;
  const auto rockRidge = IsoVolume::open(intact, {}, &error);
  ASSERT_TRUE(rockRidge) << error;
  ScratchedSource source(image);
  source.scratch(rockRidge->rootExtent());
  const auto volume = IsoVolume::open(source, {}, &error);
  ASSERT_TRUE(volume) << error;
  EXPECT_EQ(volume->naming(), isovolume::Naming::joliet);
}

}  // namespace
}  // namespace kelvane::test

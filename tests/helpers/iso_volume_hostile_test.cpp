// SPDX-License-Identifier: GPL-2.0-or-later
// Images made to do harm: loops, lengths, names and extents that no honest builder writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "helpers/image_composer.h"
#include "helpers/isovolume/directory_loader.h"
#include "helpers/isovolume/iso_volume.h"
#include "helpers/isovolume/memory_block_source.h"

namespace kelvane::test {
namespace {

using isovolume::BlockSource;
using isovolume::DirectoryEntry;
using isovolume::IsoVolume;
using isovolume::kBlockSize;
using isovolume::kRootNode;
using isovolume::MemoryBlockSource;
using isovolume::NodeId;
using isovolume::Status;

/// Counts the blocks that are asked for, and sees to it that there are none beyond the end.
class CountingSource final : public BlockSource {
 public:
  explicit CountingSource(const ImageComposer& composer) : source_(composer.image()) {}
  bool readBlocks(std::uint64_t first, std::span<std::uint8_t> out) override {
    blocksRead_ += out.size() / kBlockSize;
    EXPECT_LE(first + out.size() / kBlockSize, sizeInBlocks()) << "beyond the end of the disc";
    return source_.readBlocks(first, out);
  }
  [[nodiscard]] std::uint64_t sizeInBlocks() const override { return source_.sizeInBlocks(); }
  [[nodiscard]] std::uint64_t blocksRead() const { return blocksRead_; }

 private:
  MemoryBlockSource source_;
  std::uint64_t blocksRead_ = 0;
};

std::unique_ptr<IsoVolume> openVolume(BlockSource& source) {
  std::string error;
  auto volume = IsoVolume::open(source, {}, &error);
  EXPECT_TRUE(volume) << error;
  return volume;
}

std::vector<std::string> namesIn(IsoVolume& volume, NodeId directory = kRootNode) {
  std::vector<std::string> names;
  const auto visit = [&](const DirectoryEntry& entry, std::uint64_t) {
    names.emplace_back(entry.name);
    return true;
  };
  EXPECT_EQ(volume.readDirectory(directory, 0, visit), Status::ok);
  return names;
}

/// The names in the root directory of an image.
std::vector<std::string> rootNames(const ImageComposer& composer) {
  CountingSource source(composer);
  const auto volume = openVolume(source);
  return volume ? namesIn(*volume) : std::vector<std::string>();
}

/// The number of entries below `directory`; of those that cannot be listed none.
std::uint64_t countBelow(IsoVolume& volume, NodeId directory) {
  std::uint64_t count = 0;
  const auto visit = [&](const DirectoryEntry& entry, std::uint64_t) {
    ++count;
    if (S_ISDIR(entry.type)) count += countBelow(volume, entry.node);
    return true;
  };
  (void)volume.readDirectory(directory, 0, visit);
  return count;
}

RecordSpec directoryRecord(const std::string& name, std::uint32_t extent,
                           std::uint32_t length = 2048) {
  return {.identifier = name, .extent = extent, .length = length, .flags = kDirectoryFlag};
}

RecordSpec named(const ByteVector& nameEntries) {
  return {.identifier = "X.;1", .systemUse = susp::posix(S_IFREG | 0644) + nameEntries};
}

TEST(HostileVolume, DirectoryThatLeadsBackToTheRootCannotBeListed) {
  CountingSource source(
      composeVolume(40, Extension::none, {directoryRecord("LOOP", kComposedRoot)}));
  const auto volume = openVolume(source);
  NodeId loop = 0;
  ASSERT_EQ(volume->lookupPath("loop", &loop), Status::ok);
  EXPECT_EQ(volume->lookupPath("loop/loop", &loop), Status::loop);
  EXPECT_EQ(countBelow(*volume, kRootNode), 1u);
}

TEST(HostileVolume, DirectoriesThatMultiplyAreReadOnce) {
  // Each of ten directories has forty entries that lead to the next one: 40^10 paths.
  std::vector<RecordSpec> first;
  for (int copy = 0; copy < 40; ++copy) {
    first.push_back(directoryRecord("D" + std::to_string(copy), 21));
  }
  ImageComposer composer = composeVolume(40, Extension::none, first);
  for (std::uint32_t block = 21; block < 31; ++block) {
    std::vector<RecordSpec> next;
    for (int copy = 0; copy < 40; ++copy) {
      next.push_back(directoryRecord("D" + std::to_string(copy), block + 1));
    }
    composer.putDirectory(block, next);
  }
  CountingSource source(composer);
  const auto volume = openVolume(source);
  EXPECT_EQ(countBelow(*volume, kRootNode), 40u * 11);
  EXPECT_LT(source.blocksRead(), 200u);
}

TEST(HostileVolume, OverlappingDirectoriesCostNoMoreThanTheDisc) {
  // Every block of a long area is the beginning of a directory that claims the whole rest of the
  // disc.
  constexpr std::uint32_t kBlocks = 2000;
  std::vector<RecordSpec> root;
  for (std::uint32_t block = 200; block < kBlocks; ++block) {
    root.push_back(directoryRecord("D" + std::to_string(block), block, (kBlocks - block) * 2048));
  }
  ImageComposer composer = composeVolume(kBlocks, Extension::none, root);
  for (std::uint32_t block = 200; block < kBlocks; ++block) {
    composer.putBytes(block, 0, encode({.identifier = "F" + std::to_string(block)}));
  }
  CountingSource source(composer);
  const auto volume = openVolume(source);
  EXPECT_LT(countBelow(*volume, kRootNode), 3u * kBlocks);
  EXPECT_LT(source.blocksRead(), 3u * kBlocks);
}

TEST(HostileVolume, DirectoriesEndWhereTheTableIsFull) {
  std::vector<RecordSpec> records;
  for (int index = 0; index < 1000; ++index) {
    records.push_back({.identifier = "FILE" + std::to_string(index) + ".;1"});
  }
  CountingSource source(composeVolume(60, Extension::none, records));
  isovolume::NodeTable nodes({.entries = 200, .textBytes = 1 << 20});
  isovolume::DirectoryLoader loader(source, nodes);
  nodes.append(loader.rootNode(kComposedRoot, 60 * 2048));
  EXPECT_TRUE(loader.load(kRootNode).anyRead);
  EXPECT_TRUE(nodes.isFull());
  EXPECT_LT(nodes.size(), 200u + 2048 / 34) << "one sector more at most";
  EXPECT_FALSE(loader.load(kRootNode).anyRead) << "nothing further is read";
}

TEST(HostileVolume, SectionsOfOneFileFillTheTableToo) {
  const std::vector<RecordSpec> sections(
      1000, {.identifier = "A.;1", .extent = 50, .length = 1, .flags = kContinuedFlag});
  CountingSource source(composeVolume(60, Extension::none, sections));
  isovolume::NodeTable nodes({.entries = 200, .textBytes = 1 << 20});
  isovolume::DirectoryLoader loader(source, nodes);
  nodes.append(loader.rootNode(kComposedRoot, 60 * 2048));
  loader.load(kRootNode);
  EXPECT_EQ(nodes.size(), 2u);
  EXPECT_LT(nodes[1].size, 200u + 2048 / 34);
}

TEST(HostileVolume, NamesFillTheTableToo) {
  CountingSource source(composeVolume(60, Extension::none, {{.identifier = "FILE.;1"}}));
  isovolume::NodeTable nodes({.entries = 1 << 20, .textBytes = 1});
  isovolume::DirectoryLoader loader(source, nodes);
  nodes.append(loader.rootNode(kComposedRoot, 2048));
  EXPECT_FALSE(nodes.isFull());
  EXPECT_TRUE(loader.load(kRootNode).anyRead);
  EXPECT_TRUE(nodes.isFull()) << "names are stored in pieces larger than that";
  EXPECT_FALSE(loader.load(kRootNode).anyRead);
}

TEST(HostileVolume, DepthIsBounded) {
  constexpr std::uint32_t kLevels = 3000;
  ImageComposer composer =
      composeVolume(kLevels + 100, Extension::none, {directoryRecord("D", 30)});
  for (std::uint32_t level = 0; level < kLevels; ++level) {
    composer.putDirectory(30 + level, {directoryRecord("D", 31 + level)});
  }
  CountingSource source(composer);
  const auto volume = openVolume(source);
  EXPECT_EQ(countBelow(*volume, kRootNode), isovolume::kDeepestLevel);
}

TEST(HostileVolume, ContinuationThatLeadsToItselfEnds) {
  const ByteVector loop = susp::continuation(30, 0, 28);
  ImageComposer composer =
      composeVolume(40, Extension::rockRidge, {named(susp::name("file") + loop)});
  composer.putBytes(30, 0, loop);
  CountingSource source(composer);
  EXPECT_THAT(namesIn(*openVolume(source)), testing::ElementsAre("file"));
  EXPECT_LT(source.blocksRead(), 100u);
}

TEST(HostileVolume, NameThatGrowsInAContinuationLoopIsCut) {
  const ByteVector area = susp::name(std::string(200, 'n'), 1) + susp::continuation(30, 0, 233);
  ImageComposer composer =
      composeVolume(40, Extension::rockRidge, {named(susp::continuation(30, 0, 233))});
  composer.putBytes(30, 0, area);
  EXPECT_THAT(rootNames(composer), testing::ElementsAre(std::string(255, 'n')));
}

TEST(HostileVolume, LinkThatGrowsInAContinuationLoopCannotBeRead) {
  const ByteVector area =
      susp::link({{1, std::string(240, 'l')}}, 1) + susp::continuation(30, 0, 275);
  ImageComposer composer =
      composeVolume(40, Extension::rockRidge,
                    {{.identifier = "X.;1",
                      .systemUse = susp::posix(S_IFLNK | 0777) + susp::name("link") +
                                   susp::continuation(30, 0, 275)}});
  composer.putBytes(30, 0, area);
  CountingSource source(composer);
  const auto volume = openVolume(source);
  NodeId link = 0;
  std::string target;
  ASSERT_EQ(volume->lookupPath("link", &link), Status::ok);
  EXPECT_EQ(volume->readLink(link, &target), Status::damaged);
}

TEST(HostileVolume, ContinuationsOutsideTheDiscOrOfImpossibleSizeAreNotFollowed) {
  EXPECT_THAT(rootNames(composeVolume(
                  40, Extension::rockRidge,
                  {named(susp::name("far") + susp::continuation(0xFFFFFFFF, 0, 100)),
                   {.identifier = "Y.;1",
                    .systemUse = susp::name("huge") + susp::continuation(30, 0, 0xFFFFFFFF)},
                   {.identifier = "Z.;1",
                    .systemUse = susp::name("behind") + susp::continuation(30, 0xFFFFFFFF, 100)}})),
              testing::ElementsAre("far", "huge", "behind"));
}

TEST(HostileVolume, RecordsThatShareLongContinuationsCostNoMoreThanTheDisc) {
  // Each of a thousand records goes on in the same thirty areas of eight blocks.
  constexpr std::uint32_t kBlocks = 400;
  constexpr std::uint32_t kAreaLength = 8 * 2048;
  const std::vector<RecordSpec> records(1000, named(susp::continuation(100, 0, kAreaLength)));
  ImageComposer composer = composeVolume(kBlocks, Extension::rockRidge, records);
  for (std::uint32_t area = 0; area < 30; ++area) {
    composer.putBytes(100 + 8 * area, 0, susp::continuation(108 + 8 * area, 0, kAreaLength));
  }
  CountingSource source(composer);
  const auto volume = openVolume(source);
  EXPECT_EQ(countBelow(*volume, kRootNode), 1u) << "all of them bear the same name";
  EXPECT_LT(source.blocksRead(), 2u * kBlocks);
}

TEST(HostileVolume, NamesThatLeadElsewhereAreLeftOut) {
  EXPECT_THAT(rootNames(composeVolume(
                  40, Extension::rockRidge,
                  {named(susp::name("../../etc/passwd")), named(susp::name("..")),
                   named(susp::name(".")), named(susp::name("/")),
                   named(susp::name(std::string_view("a\0b", 3))), named(susp::name("good"))})),
              testing::ElementsAre("good"));
  EXPECT_THAT(rootNames(composeVolume(40, Extension::none,
                                      {{.identifier = "A/B.;1"},
                                       {.identifier = "..;1"},
                                       {.identifier = "...;1"},
                                       {.identifier = "GOOD.;1"}})),
              testing::ElementsAre("good"));
}

TEST(HostileVolume, SecondEntryOfTheSameNameIsLeftOut) {
  CountingSource source(composeVolume(
      40, Extension::rockRidge,
      {named(susp::name("twin")), named(susp::name("other")), named(susp::name("twin"))}));
  EXPECT_THAT(namesIn(*openVolume(source)), testing::ElementsAre("twin", "other"));
}

TEST(HostileVolume, RecordThatIsNoRecordEndsItsSectorOnly) {
  for (const std::uint8_t length : ByteVector{1, 33, 255}) {
    SCOPED_TRACE(int{length});
    std::vector<RecordSpec> records;
    for (int index = 0; index < 100; ++index) {
      records.push_back({.identifier = "FILE" + std::to_string(1000 + index) + ".;1"});
    }
    ImageComposer composer = composeVolume(40, Extension::none, records);
    const std::vector<std::string> intact = rootNames(composer);
    ASSERT_EQ(intact.size(), 100u);
    // The third record of the first sector, behind "." and ".." of 34 bytes each.
    composer.putBytes(kComposedRoot, 68, {length});
    const std::vector<std::string> left = rootNames(composer);
    EXPECT_GT(left.size(), 40u);
    EXPECT_LT(left.size(), 100u);
    EXPECT_EQ(left.back(), intact.back());
  }
}

TEST(HostileVolume, IdentifierLongerThanItsRecordIsDamage) {
  ImageComposer composer = composeVolume(40, Extension::none, {{.identifier = "FILE.;1"}});
  composer.putBytes(kComposedRoot, 68 + 32, {200});
  EXPECT_TRUE(rootNames(composer).empty());
  composer.putBytes(kComposedRoot, 68 + 32, {0});
  EXPECT_TRUE(rootNames(composer).empty());
}

TEST(HostileVolume, SystemUseEntriesOfWrongLengthEndTheirArea) {
  for (const std::uint8_t length : ByteVector{0, 3, 255}) {
    SCOPED_TRACE(int{length});
    ByteVector broken = susp::name("lost");
    broken[2] = length;
    EXPECT_THAT(rootNames(composeVolume(40, Extension::rockRidge, {named(broken)})),
                testing::ElementsAre("x"));
  }
}

TEST(HostileVolume, ExtentsOutsideTheDiscFailWhenTheyAreRead) {
  CountingSource source(
      composeVolume(40, Extension::none,
                    {{.identifier = "BEYOND.;1", .extent = 0xFFFFFFFF, .length = 10},
                     {.identifier = "ACROSS.;1", .extent = 39, .length = 2049},
                     {.identifier = "HUGE.;1", .extent = 30, .length = 0xFFFFFFFF},
                     {.identifier = "WITHIN.;1", .extent = 39, .length = 2048},
                     directoryRecord("DIR", 0xFFFFFFFE, 0xFFFFFFFF),
                     directoryRecord("LONGDIR", 38, 0xFFFFFFFF)}));
  const auto volume = openVolume(source);
  std::vector<std::uint8_t> out(4096);
  std::size_t length = 0;
  NodeId node = 0;
  for (const char* name : {"beyond", "across", "huge"}) {
    ASSERT_EQ(volume->lookupPath(name, &node), Status::ok);
    const std::uint64_t size = volume->attributes(node).size;
    EXPECT_EQ(volume->readFile(node, size - 1, std::span(out).first(1), &length), Status::damaged)
        << name;
  }
  ASSERT_EQ(volume->lookupPath("within", &node), Status::ok);
  EXPECT_EQ(volume->readFile(node, 0, out, &length), Status::ok);
  EXPECT_EQ(length, 2048u);
  EXPECT_EQ(volume->lookupPath("dir/x", &node), Status::damaged);
  EXPECT_EQ(volume->lookupPath("longdir/x", &node), Status::notFound);
}

TEST(HostileVolume, OverlappingExtentsAreReadAsTheyStand) {
  ImageComposer composer =
      composeVolume(40, Extension::none,
                    {{.identifier = "FIRST.;1", .extent = 30, .length = 3 * 2048},
                     {.identifier = "SECOND.;1", .extent = 31, .length = 3 * 2048},
                     {.identifier = "ROOT.;1", .extent = kComposedRoot, .length = 2048},
                     {.identifier = "ALL.;1", .extent = 0, .length = 40 * 2048}});
  for (const std::uint32_t block : {30u, 31u, 32u, 33u}) {
    composer.putText(block, "block " + std::to_string(block));
  }
  CountingSource source(composer);
  const auto volume = openVolume(source);
  const auto textAt = [&](const char* name, std::uint64_t offset) {
    std::string text(8, '\0');
    std::size_t length = 0;
    NodeId node = 0;
    EXPECT_EQ(volume->lookupPath(name, &node), Status::ok) << name;
    const std::span bytes(reinterpret_cast<std::uint8_t*>(text.data()), text.size());
    EXPECT_EQ(volume->readFile(node, offset, bytes, &length), Status::ok) << name;
    return text;
  };
  EXPECT_EQ(textAt("first", 2048), "block 31");
  EXPECT_EQ(textAt("second", 0), "block 31");
  EXPECT_EQ(textAt("second", 4096), "block 33");
  EXPECT_EQ(textAt("all", 32 * 2048), "block 32");
  EXPECT_EQ(textAt("root", 33), textAt("all", kComposedRoot * 2048 + 33));
}

TEST(HostileVolume, RootOfAnImpossibleLengthShowsWhatIsThere) {
  for (const std::uint32_t length : {2048u, 2047u, 4096u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    SCOPED_TRACE(length);
    ImageComposer composer = composeVolume(40, Extension::none, {{.identifier = "FILE.;1"}});
    composer.putDescriptors(16, kComposedRoot, length);
    EXPECT_THAT(rootNames(composer), testing::ElementsAre("file"));
  }
}

TEST(HostileVolume, RootThatLiesNowhereIsNoVolume) {
  for (const std::uint32_t extent : {40u, 0xFFFFFFFFu}) {
    ImageComposer composer = composeVolume(40, Extension::none, {});
    composer.putDescriptors(16, extent, 2048);
    CountingSource source(composer);
    std::string error;
    EXPECT_FALSE(IsoVolume::open(source, {}, &error));
    EXPECT_EQ(error, "the root directory of the volume at block 0 cannot be read");
  }
}

TEST(HostileVolume, DirectoryEndsWhereTheNextOneBegins) {
  ImageComposer composer =
      composeVolume(60, Extension::none,
                    {directoryRecord("LONG", 30, 20 * 2048), directoryRecord("NEXT", 31, 2048)});
  composer.putDirectory(30, {{.identifier = "MINE.;1"}});
  composer.putDirectory(31, {{.identifier = "OTHERS.;1"}});
  CountingSource source(composer);
  const auto volume = openVolume(source);
  NodeId node = 0;
  ASSERT_EQ(volume->lookupPath("long", &node), Status::ok);
  EXPECT_THAT(namesIn(*volume, node), testing::ElementsAre("mine"));
  ASSERT_EQ(volume->lookupPath("next", &node), Status::ok);
  EXPECT_THAT(namesIn(*volume, node), testing::ElementsAre("others"));
}

TEST(HostileVolume, RelocationThatLeadsToNoDirectoryCannotBeListed) {
  ImageComposer composer = composeVolume(
      40, Extension::rockRidge,
      {{.identifier = "A.;1", .systemUse = susp::name("nowhere") + susp::childLink(0xFFFFFF)},
       {.identifier = "B.;1", .systemUse = susp::name("data") + susp::childLink(30)},
       {.identifier = "C.;1", .systemUse = susp::name("up") + susp::childLink(kComposedRoot)}});
  composer.putText(30, "no directory");
  CountingSource source(composer);
  const auto volume = openVolume(source);
  NodeId node = 0;
  EXPECT_EQ(volume->lookupPath("nowhere/x", &node), Status::damaged);
  EXPECT_NE(volume->lookupPath("data/x", &node), Status::ok);
  EXPECT_EQ(volume->lookupPath("up/up", &node), Status::loop);
}

TEST(HostileVolume, FileWhoseLastSectionIsMissingCannotBeRead) {
  CountingSource source(
      composeVolume(40, Extension::none,
                    {{.identifier = "A.;1", .extent = 30, .length = 2048, .flags = kContinuedFlag},
                     {.identifier = "B.;1", .extent = 31, .length = 10}}));
  const auto volume = openVolume(source);
  EXPECT_THAT(namesIn(*volume), testing::ElementsAre("a", "b"));
  std::uint8_t out[1] = {};
  std::size_t length = 0;
  NodeId node = 0;
  ASSERT_EQ(volume->lookupPath("a", &node), Status::ok);
  EXPECT_EQ(volume->readFile(node, 0, out, &length), Status::damaged);
}

TEST(HostileVolume, TypeThatContradictsTheRecordIsNotBelieved) {
  RecordSpec directory = directoryRecord("DIR", 30);
  directory.systemUse = susp::posix(S_IFREG | 0644);
  ImageComposer composer = composeVolume(
      40, Extension::rockRidge,
      {{.identifier = "FILE.;1", .systemUse = susp::posix(S_IFDIR | 0755)}, directory});
  composer.putDirectory(30, {});
  CountingSource source(composer);
  const auto volume = openVolume(source);
  NodeId node = 0;
  ASSERT_EQ(volume->lookupPath("file", &node), Status::ok);
  EXPECT_TRUE(S_ISREG(volume->attributes(node).mode));
  ASSERT_EQ(volume->lookupPath("dir", &node), Status::ok);
  EXPECT_TRUE(S_ISDIR(volume->attributes(node).mode));
}

}  // namespace
}  // namespace kelvane::test

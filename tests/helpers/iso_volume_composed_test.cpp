// SPDX-License-Identifier: GPL-2.0-or-later
// Features that builders use rarely or only for huge files, on composed images.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "helpers/file_tree.h"
#include "helpers/image_composer.h"
#include "helpers/isovolume/iso_volume.h"
#include "helpers/isovolume/memory_block_source.h"
#include "helpers/workshop.h"

namespace kelvane::test {
namespace {

using isovolume::FileBlockSource;
using isovolume::IsoVolume;
using isovolume::MemoryBlockSource;
using isovolume::NodeId;
using isovolume::Status;

/// A volume in memory with its source.
struct Opened {
  explicit Opened(const ImageComposer& composer) : source(composer.image()) {
    std::string error;
    volume = IsoVolume::open(source, {}, &error);
    EXPECT_TRUE(volume) << error;
  }
  NodeId find(std::string_view path) {
    NodeId node = 0;
    EXPECT_EQ(volume->lookupPath(path, &node), Status::ok) << path;
    return node;
  }
  std::string read(std::string_view path) {
    const NodeId file = find(path);
    std::string content(volume->attributes(file).size, '\0');
    std::size_t length = 0;
    std::span out(reinterpret_cast<std::uint8_t*>(content.data()), content.size());
    EXPECT_EQ(volume->readFile(file, 0, out, &length), Status::ok);
    EXPECT_EQ(length, content.size());
    return content;
  }
  std::string link(std::string_view path) {
    std::string target;
    EXPECT_EQ(volume->readLink(find(path), &target), Status::ok);
    return target;
  }

  MemoryBlockSource source;
  std::unique_ptr<IsoVolume> volume;
};

TEST(IsoVolumeComposed, FileInSeveralSectionsIsOneFile) {
  ImageComposer composer = composeVolume(
      40, Extension::none,
      {{.identifier = "BEFORE.;1", .extent = 30, .length = 3},
       {.identifier = "HUGE.BIN;1", .extent = 31, .length = 4096, .flags = kContinuedFlag},
       {.identifier = "HUGE.BIN;1", .extent = 36, .length = 2048, .flags = kContinuedFlag},
       {.identifier = "HUGE.BIN;1", .extent = 34, .length = 100},
       {.identifier = "OTHER.;1", .extent = 30, .length = 3}});
  composer.putText(30, "abc");
  composer.putText(31, std::string(2048, '1'));
  composer.putText(32, std::string(2048, '2'));
  composer.putText(36, std::string(2048, '3'));
  composer.putText(34, std::string(100, '4'));
  Opened opened(composer);
  const std::string expected = std::string(2048, '1') + std::string(2048, '2') +
                               std::string(2048, '3') + std::string(100, '4');
  EXPECT_EQ(opened.read("huge.bin"), expected);
  EXPECT_EQ(opened.read("other"), "abc");
  EXPECT_EQ(treeOfVolume(*opened.volume).size(), 3u);

  const Workshop workshop;
  composer.writeSparse(workshop / "disc");
  mustRun({"xorriso", "-osirrox", "on", "-indev", workshop / "disc", "-extract", "/",
           workshop / "extracted"});
  EXPECT_EQ(readFile(workshop / "extracted" / "HUGE.BIN"), expected);
}

TEST(IsoVolumeComposed, FileOfMoreThanFourGigabytesIsReadAcrossItsSections) {
  constexpr std::uint32_t kFirstLength = 0xFFFFF800;
  constexpr std::uint32_t kSecondBlock = 30 + kFirstLength / 2048;
  ImageComposer composer = composeVolume(
      kSecondBlock + 10, Extension::none,
      {{.identifier = "HUGE.;1", .extent = 30, .length = kFirstLength, .flags = kContinuedFlag},
       {.identifier = "HUGE.;1", .extent = kSecondBlock, .length = 10000}});
  composer.putText(kSecondBlock - 1, std::string(2044, '-') + "last");
  composer.putText(kSecondBlock, "next");
  composer.putText(kSecondBlock + 4, std::string(10000 - 4 * 2048 - 3, '-') + "end");
  const Workshop workshop;
  composer.writeSparse(workshop / "disc");
  std::string error;
  const auto source = FileBlockSource::open(workshop / "disc", &error);
  ASSERT_TRUE(source) << error;
  const auto volume = IsoVolume::open(*source, {}, &error);
  ASSERT_TRUE(volume) << error;
  NodeId file = 0;
  ASSERT_EQ(volume->lookupPath("huge", &file), Status::ok);
  const std::uint64_t size = std::uint64_t{kFirstLength} + 10000;
  EXPECT_EQ(volume->attributes(file).size, size);
  std::string border(8, '\0');
  std::size_t length = 0;
  std::span out(reinterpret_cast<std::uint8_t*>(border.data()), border.size());
  ASSERT_EQ(volume->readFile(file, kFirstLength - 4, out, &length), Status::ok);
  EXPECT_EQ(border, "lastnext");
  ASSERT_EQ(volume->readFile(file, size - 3, out, &length), Status::ok);
  EXPECT_EQ(border.substr(0, length), "end");
  EXPECT_THAT(mustRun({"xorriso", "-indev", workshop / "disc", "-find", "/HUGE", "-exec", "lsdl"}),
              testing::HasSubstr(std::to_string(size)));
}

TEST(IsoVolumeComposed, ExtendedAttributeRecordIsNotPartOfTheFile) {
  ImageComposer composer = composeVolume(
      40, Extension::none,
      {{.identifier = "FILE.;1", .extent = 30, .length = 4, .extendedAttributeLength = 2}});
  composer.putText(30, "attr");
  composer.putText(32, "data");
  EXPECT_EQ(Opened(composer).read("file"), "data");
}

TEST(IsoVolumeComposed, AssociatedFilesAreNotShown) {
  ImageComposer composer =
      composeVolume(40, Extension::none,
                    {{.identifier = "FILE.;1", .extent = 30, .length = 4, .flags = kAssociatedFlag},
                     {.identifier = "FILE.;1", .extent = 31, .length = 4}});
  composer.putText(31, "data");
  Opened opened(composer);
  EXPECT_EQ(opened.read("file"), "data");
  EXPECT_EQ(treeOfVolume(*opened.volume).size(), 1u);
}

TEST(IsoVolumeComposed, InterleavedFileIsShownButCannotBeRead) {
  Opened opened(composeVolume(
      40, Extension::none, {{.identifier = "FILE.;1", .extent = 30, .length = 4, .unitSize = 1}}));
  std::uint8_t out[4] = {};
  std::size_t length = 0;
  EXPECT_EQ(opened.volume->readFile(opened.find("file"), 0, out, &length), Status::damaged);
}

TEST(IsoVolumeComposed, LinkIsPutTogetherFromItsComponents) {
  const auto linkRecord = [](const std::string& identifier, const std::string& name,
                             const ByteVector& entries) {
    return RecordSpec{.identifier = identifier,
                      .systemUse = susp::posix(S_IFLNK | 0777) + susp::name(name) + entries};
  };
  Opened opened(composeVolume(
      40, Extension::rockRidge,
      {linkRecord("A.;1", "root", susp::link({{8, ""}, {0, "etc"}, {0, "x"}})),
       linkRecord("B.;1", "dots", susp::link({{2, ""}, {4, ""}, {4, ""}, {0, "up"}})),
       linkRecord("C.;1", "split", susp::link({{1, "one "}, {1, "com"}, {0, "ponent"}, {0, "y"}})),
       linkRecord("D.;1", "twice",
                  susp::link({{0, "first"}, {1, "half"}}, 1) + susp::link({{0, "way"}})),
       linkRecord("E.;1", "onlyroot", susp::link({{8, ""}}))}));
  EXPECT_EQ(opened.link("root"), "/etc/x");
  EXPECT_EQ(opened.link("dots"), "./../../up");
  EXPECT_EQ(opened.link("split"), "one component/y");
  EXPECT_EQ(opened.link("twice"), "first/halfway");
  EXPECT_EQ(opened.link("onlyroot"), "/");
}

TEST(IsoVolumeComposed, NameInPartsAndContinuationsIsOneName) {
  const ByteVector rest = susp::name(" and the second", 1) + susp::name(" and the third");
  ImageComposer composer = composeVolume(
      40, Extension::rockRidge,
      {{.identifier = "A.;1",
        .systemUse = susp::name("first", 1) +
                     susp::continuation(30, 2040, static_cast<std::uint32_t>(rest.size()))}});
  composer.putBytes(30, 2040, rest);  // across the end of a block
  Opened opened(composer);
  EXPECT_EQ(treeOfVolume(*opened.volume).begin()->first, "first and the second and the third");
}

TEST(IsoVolumeComposed, TimeStampsOfEitherFormAreThoseOfRockRidge) {
  const auto digits = [](std::string_view text) {
    return ByteVector(text.begin(), text.end()) + ByteVector{0};
  };
  Opened opened(composeVolume(
      40, Extension::rockRidge,
      {{.identifier = "LONG.;1",
        .systemUse = susp::entry(
            "TF", ByteVector{0x86} + digits("2009021323313000") + digits("2024022912345600"))},
       {.identifier = "SHORT.;1",
        .systemUse = susp::entry(
            "TF", {0x0B, 70, 1, 1, 0, 0, 1, 0, 70, 1, 1, 0, 0, 2, 0, 70, 1, 1, 0, 0, 3, 0})}}));
  const isovolume::Attributes longForm = opened.volume->attributes(opened.find("long"));
  EXPECT_EQ(longForm.modified, 1234567890);
  EXPECT_EQ(longForm.accessed, 1709210096);
  const isovolume::Attributes shortForm = opened.volume->attributes(opened.find("short"));
  EXPECT_EQ(shortForm.modified, 2);
  EXPECT_EQ(shortForm.changed, 3) << "of the attributes rather than of the creation";
}

TEST(IsoVolumeComposed, OwnersAndModesAreThoseOfRockRidge) {
  Opened opened(
      composeVolume(40, Extension::rockRidge,
                    {{.identifier = "A.;1", .systemUse = susp::posix(S_IFREG | 04711, 1000, 100)},
                     {.identifier = "B.;1", .systemUse = susp::posix(S_IFIFO | 0600)}}));
  const isovolume::Attributes file = opened.volume->attributes(opened.find("a"));
  EXPECT_EQ(file.mode, mode_t{S_IFREG | 04711});
  EXPECT_EQ(file.user, 1000u);
  EXPECT_EQ(file.group, 100u);
  EXPECT_TRUE(S_ISFIFO(opened.volume->attributes(opened.find("b")).mode));
}

}  // namespace
}  // namespace kelvane::test

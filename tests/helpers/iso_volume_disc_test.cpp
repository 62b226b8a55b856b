// SPDX-License-Identifier: GPL-2.0-or-later
// Volumes on discs that the real builders made, against their source and against what xorriso and
// isoinfo read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>
#include <sstream>
#include <stdexcept>

#include "helpers/file_tree.h"
#include "helpers/isovolume/iso_volume.h"
#include "helpers/workshop.h"

namespace kelvane::test {
namespace {

namespace fs = std::filesystem;
using isovolume::FileBlockSource;
using isovolume::IsoVolume;
using isovolume::Naming;
using isovolume::NodeId;
using isovolume::Status;

class IsoVolumeOnDisc : public testing::Test {
 protected:
  void SetUp() override { fs::create_directory(tree()); }

  [[nodiscard]] fs::path tree() const { return workshop_ / "tree"; }
  [[nodiscard]] std::string image() const { return workshop_ / "disc.iso"; }

  void buildWith(std::vector<std::string> builder) {
    builder.insert(builder.end(), {"-o", image(), tree().string()});
    mustRun(builder);
  }
  void genisoimage(const std::vector<std::string>& options) {
    std::vector<std::string> builder = {"genisoimage", "-quiet", "-input-charset", "utf-8"};
    builder.insert(builder.end(), options.begin(), options.end());
    buildWith(builder);
  }
  void xorriso(const std::vector<std::string>& options) {
    std::vector<std::string> builder = {"xorriso", "-as", "mkisofs", "-quiet"};
    builder.insert(builder.end(), options.begin(), options.end());
    buildWith(builder);
  }

  IsoVolume& open() {
    std::string error;
    source_ = FileBlockSource::open(image(), &error);
    if (source_) volume_ = IsoVolume::open(*source_, {}, &error);
    if (!volume_) throw std::runtime_error(error);
    return *volume_;
  }

  FileTree treeThatXorrisoReads() {
    const fs::path target = workshop_ / "extracted";
    mustRun({"xorriso", "-osirrox", "on", "-indev", image(), "-extract", "/", target.string()});
    return treeOfDirectory(target);
  }

  std::set<std::string> pathsThatIsoinfoReads(const std::string& option) {
    std::istringstream lines(mustRun({"isoinfo", option, "-f", "-i", image()}));
    std::set<std::string> paths;
    for (std::string line; std::getline(lines, line);) paths.insert(line.substr(1));
    return paths;
  }

  /// Everything that names, types and attributes may be.
  void fillTree() {
    for (const char* name : {"plain.txt", "Größe ändern.txt", "[brackets] (1) {2}.dat",
                             "two  spaces", "UPPER.TXT", ".hidden", "no_extension", "a+b=c;d"}) {
      writeFile(tree() / name, std::string("content of ") + name);
    }
    writeFile(tree() / std::string(100, 'n'), "100");
    writeFile(tree() / std::string(255, 'm'), "255");
    writeFile(tree() / "empty", "");
    writeFile(tree() / "one block", std::string(2048, 'x'));
    writeFile(tree() / "large", std::string(300000, 'y') + "end");
    fs::create_directory(tree() / "empty directory");
    fs::create_directories(tree() / "Ordner" / "in Ordner");
    writeFile(tree() / "Ordner" / "in Ordner" / "datei", "deep");
    fs::create_symlink("../relative/target", tree() / "relative link");
    fs::create_symlink("/absolute/target", tree() / "absolute link");
    fs::create_symlink(".", tree() / "link to dot");
    fs::create_symlink("Ordner/./../Ordner", tree() / "link with dots");
    fs::create_symlink(std::string(150, 'l') + "/" + std::string(60, 'k'), tree() / "long link");
    fs::permissions(tree() / "plain.txt", fs::perms(0600));
    fs::permissions(tree() / "UPPER.TXT", fs::perms(0754));
    fs::permissions(tree() / "Ordner", fs::perms(0750));
    std::int64_t time = 951782400;  // 29 February 2000, and later ones, none of them today
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(tree())) {
      setModificationTime(entry.path(), time += 1000000);
    }
    setModificationTime(tree() / "UPPER.TXT", 86400);
  }

  Workshop workshop_;

 private:
  std::unique_ptr<FileBlockSource> source_;
  std::unique_ptr<IsoVolume> volume_;
};

TEST_F(IsoVolumeOnDisc, RockRidgeOfGenisoimageShowsTheSourceTree) {
  fillTree();
  genisoimage({"-R", "-J", "-joliet-long"});
  EXPECT_EQ(open().naming(), Naming::rockRidge);
  EXPECT_EQ(differences(treeOfVolume(open()), treeOfDirectory(tree())), "");
}

TEST_F(IsoVolumeOnDisc, RockRidgeOfXorrisoShowsTheSourceTree) {
  fillTree();
  xorriso({"-R", "-J", "-joliet-long"});
  EXPECT_EQ(open().naming(), Naming::rockRidge);
  EXPECT_EQ(differences(treeOfVolume(open()), treeOfDirectory(tree())), "");
}

TEST_F(IsoVolumeOnDisc, RockRidgeShowsWhatXorrisoAndIsoinfoRead) {
  fillTree();
  genisoimage({"-r", "-D", "-J", "-joliet-long"});
  const FileTree shown = treeOfVolume(open());
  EXPECT_EQ(differences(asExtracted(shown), asExtracted(treeThatXorrisoReads())), "");
  std::set<std::string> paths;
  for (const auto& [path, entry] : shown) paths.insert(path);
  EXPECT_EQ(paths, pathsThatIsoinfoReads("-R"));
}

TEST_F(IsoVolumeOnDisc, DeepDirectoriesStandAtTheirPlaceWhereTheyWereRelocated) {
  fs::path deep = tree();
  for (int level = 1; level <= 20; ++level) {
    deep /= "level " + std::to_string(level);
    fs::create_directory(deep);
    writeFile(deep / "file", "at level " + std::to_string(level));
  }
  genisoimage({"-R"});
  ASSERT_THAT(pathsThatIsoinfoReads("-R"), testing::Contains(testing::StartsWith("rr_moved/")));
  EXPECT_EQ(differences(treeOfVolume(open()), treeOfDirectory(tree())), "");
}

TEST_F(IsoVolumeOnDisc, DeepDirectoriesStandAtTheirPlaceWhereXorrisoRelocatedThem) {
  const fs::path deep = tree() / "1/2/3/4/5/6/7/8/9/10";
  fs::create_directories(deep);
  writeFile(deep / "file", "deep");
  mustRun({"xorriso", "-compliance", "deep_paths_off:long_paths_off", "-rr_reloc_dir", "rr_moved",
           "-outdev", image(), "-map", tree().string(), "/"});
  EXPECT_EQ(differences(treeOfVolume(open()), treeOfDirectory(tree())), "");
}

TEST_F(IsoVolumeOnDisc, DeepDirectoriesStandAtTheirPlaceWhereTheyWereNotRelocated) {
  const fs::path deep = tree() / "1/2/3/4/5/6/7/8/9/10/11/12";
  fs::create_directories(deep);
  writeFile(deep / "file", "deep");
  genisoimage({"-R", "-D"});
  EXPECT_EQ(differences(treeOfVolume(open()), treeOfDirectory(tree())), "");
}

TEST_F(IsoVolumeOnDisc, OwnDirectoryThatBearsTheRelocationDirectorysNameIsShown) {
  fs::create_directory(tree() / "rr_moved");
  writeFile(tree() / "rr_moved" / "file", "mine");
  genisoimage({"-R"});
  EXPECT_EQ(differences(treeOfVolume(open()), treeOfDirectory(tree())), "");
}

TEST_F(IsoVolumeOnDisc, BigDirectoryIsListedWholeAndEveryNameIsFound) {
  constexpr unsigned kFiles = 20000;
  for (unsigned index = 0; index < kFiles; ++index) {
    writeFile(tree() / (std::to_string(index) + " is its number"), "");
  }
  genisoimage({"-R"});
  IsoVolume& volume = open();
  std::set<std::string, std::less<>> names;
  std::uint64_t position = 0;
  // In small pieces, as a file system is asked.
  for (bool more = true; more;) {
    more = false;
    unsigned piece = 0;
    const auto visit = [&](const isovolume::DirectoryEntry& entry, std::uint64_t next) {
      EXPECT_TRUE(names.emplace(entry.name).second) << entry.name;
      position = next;
      more = true;
      return ++piece < 100;
    };
    ASSERT_EQ(volume.readDirectory(isovolume::kRootNode, position, visit), Status::ok);
  }
  EXPECT_EQ(names.size(), kFiles);
  NodeId found = 0;
  for (unsigned index = 0; index < kFiles; ++index) {
    const std::string name = std::to_string(index) + " is its number";
    EXPECT_TRUE(names.contains(name)) << name;
    EXPECT_EQ(volume.lookup(isovolume::kRootNode, name, &found), Status::ok) << name;
  }
  EXPECT_EQ(volume.lookup(isovolume::kRootNode, "20000 is its number", &found), Status::notFound);
}

TEST_F(IsoVolumeOnDisc, JolietIsUsedWhereThereIsNoRockRidge) {
  writeFile(tree() / "Größe [1] ändern.Text", "joliet");
  writeFile(tree() / std::string(100, 'n'), "100");
  fs::create_directory(tree() / "Ein Ordner");
  writeFile(tree() / "Ein Ordner" / "€ 💿", "beyond");
  genisoimage({"-J", "-joliet-long"});
  IsoVolume& volume = open();
  EXPECT_EQ(volume.naming(), Naming::joliet);
  const FileTree shown = treeOfVolume(volume);
  EXPECT_EQ(shown.at("Größe [1] ändern.Text").permissions, 0555u);
  FileTree expected = withoutAttributes(treeOfDirectory(tree()));
  // genisoimage knows only the characters of UCS-2.
  const auto beyond = expected.extract("Ein Ordner/€ 💿");
  EXPECT_EQ(withoutAttributes(shown).at("Ein Ordner"), expected.at("Ein Ordner"));
  for (const auto& [path, entry] : expected) {
    EXPECT_EQ(withoutAttributes(shown).at(path), entry) << path;
  }
  EXPECT_EQ(shown.size(), expected.size() + 1);
  ASSERT_FALSE(beyond.empty());
}

TEST_F(IsoVolumeOnDisc, PlainNamesAreTheLowerCaseOnesThatLinuxShows) {
  writeFile(tree() / "README.TXT", "readme");
  writeFile(tree() / "makefile", "make");
  fs::create_directory(tree() / "DIR");
  writeFile(tree() / "DIR" / "INNER.C", "c");
  genisoimage({});
  IsoVolume& volume = open();
  EXPECT_EQ(volume.naming(), Naming::plain);
  std::set<std::string> paths;
  for (const auto& [path, entry] : treeOfVolume(volume)) paths.insert(path);
  EXPECT_EQ(paths, (std::set<std::string>{"dir", "dir/inner.c", "makefile", "readme.txt"}));
  NodeId node = 0;
  ASSERT_EQ(volume.lookupPath("/dir/inner.c", &node), Status::ok);
  EXPECT_EQ(volume.attributes(node).mode, mode_t{S_IFREG | 0555});
  std::uint8_t content[10] = {};
  std::size_t length = 0;
  ASSERT_EQ(volume.readFile(node, 0, content, &length), Status::ok);
  EXPECT_EQ(length, 1u);
  EXPECT_EQ(content[0], 'c');
}

TEST_F(IsoVolumeOnDisc, ReadsEndWithTheFile) {
  writeFile(tree() / "file", std::string(2048, 'a') + "rest");
  genisoimage({"-R"});
  IsoVolume& volume = open();
  NodeId file = 0;
  ASSERT_EQ(volume.lookupPath("file", &file), Status::ok);
  std::vector<std::uint8_t> out(5000);
  std::size_t length = 0;
  ASSERT_EQ(volume.readFile(file, 2047, out, &length), Status::ok);
  EXPECT_EQ(std::string(out.begin(), out.begin() + static_cast<long>(length)), "arest");
  ASSERT_EQ(volume.readFile(file, 2052, out, &length), Status::ok);
  EXPECT_EQ(length, 0u);
  ASSERT_EQ(volume.readFile(file, UINT64_MAX, out, &length), Status::ok);
  EXPECT_EQ(length, 0u);
}

TEST_F(IsoVolumeOnDisc, RequestsForTheWrongKindOfNodeAreRefused) {
  fillTree();
  genisoimage({"-R"});
  IsoVolume& volume = open();
  NodeId directory = 0;
  NodeId file = 0;
  NodeId none = 0;
  ASSERT_EQ(volume.lookupPath("Ordner", &directory), Status::ok);
  ASSERT_EQ(volume.lookupPath("empty", &file), Status::ok);
  std::uint8_t out[1] = {};
  std::size_t length = 0;
  std::string target;
  EXPECT_EQ(volume.readFile(directory, 0, out, &length), Status::notAFile);
  EXPECT_EQ(volume.readLink(file, &target), Status::notALink);
  EXPECT_EQ(volume.lookup(file, "x", &none), Status::notADirectory);
  EXPECT_EQ(volume.lookupPath("empty/x", &none), Status::notADirectory);
  EXPECT_EQ(volume.lookupPath("Ordner/nothing", &none), Status::notFound);
  EXPECT_FALSE(volume.contains(1000000));
}

TEST_F(IsoVolumeOnDisc, EmptyVolumeHasARootAndNothingInIt) {
  genisoimage({"-R", "-J"});
  EXPECT_TRUE(treeOfVolume(open()).empty());
  EXPECT_TRUE(S_ISDIR(open().attributes(isovolume::kRootNode).mode));
}

TEST_F(IsoVolumeOnDisc, VolumeNameIsTheLongerOfTheTwo) {
  genisoimage({"-R", "-J", "-V", "A Name Of More Than 16 Chars"});
  EXPECT_EQ(open().volumeId(), "A Name Of More Than 16 Chars");
}

TEST_F(IsoVolumeOnDisc, VolumeNameIsFitToBeAFileName) {
  genisoimage({"-R", "-J", "-V", "back/up ä"});
  EXPECT_EQ(open().volumeId(), "back_up ä");
}

TEST_F(IsoVolumeOnDisc, SizeAndRootAreThoseThatIsoinfoReads) {
  fillTree();
  genisoimage({"-R", "-J", "-joliet-long"});
  const std::string report = mustRun({"isoinfo", "-d", "-i", image()});
  EXPECT_THAT(report, testing::HasSubstr(
                          "Volume size is: " + std::to_string(open().volumeSpaceSize()) + "\n"));
  const std::string listing = mustRun({"isoinfo", "-l", "-R", "-i", image()});
  EXPECT_THAT(listing, testing::ContainsRegex("\\[ *" + std::to_string(open().rootExtent()) +
                                              " 02\\]  \\. "));
}

}  // namespace
}  // namespace kelvane::test

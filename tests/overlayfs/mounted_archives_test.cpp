// SPDX-License-Identifier: GPL-2.0-or-later
// Archivers: packing, unpacking and updating on a mounted volume, with archives on the disc too.
#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedArchives : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/docs/one.txt", "one\n");
    trees.addDiscFile("/docs/deep/two.txt", "two\n");
    trees.addDiscFile("/letter.txt", "from the disc\n");
    const CommandResult made = runShell(
        "cd " + trees.root() +
        " && mkdir -p src/docs src/added && echo packed > src/docs/one.txt && echo a > src/added/a"
        " && chmod 640 src/added/a && cd src && tar -cf " +
        trees.disc() + "/a.tar . && tar -czf " + trees.disc() + "/a.tgz . && zip -qr " +
        trees.disc() + "/a.zip . && 7z a " + trees.disc() + "/a.7z .");
    ASSERT_EQ(made.status, 0) << made.output;
    mount();
  }
  /// What the archives hold stands on the volume, over what the disc has.
  void expectUnpacked(const std::string& folder) {
    EXPECT_EQ(contentOf(at(folder + "/docs/one.txt")), "packed\n");
    EXPECT_EQ(contentOf(at(folder + "/added/a")), "a\n");
    EXPECT_EQ(statusOf(at(folder + "/added/a")).st_mode & 0777, 0640U);
  }
};

TEST_F(MountedArchives, TarPacksADirectoryOfTheDiscAndFindsNoDifference) {
  sh("tar -czf new.tgz docs && tar -dzf new.tgz && tar -tzf new.tgz | grep -qx docs/deep/two.txt");
}

TEST_F(MountedArchives, TarUnpacksOverTheDisc) {
  sh("tar -xf a.tar && tar -df a.tar");
  expectUnpacked("");
  EXPECT_EQ(contentOf(at("/docs/deep/two.txt")), "two\n");
}

TEST_F(MountedArchives, TarUnpacksPermissionsOwnersAndLinks) {
  sh("cd ../../src && ln -s one.txt docs/link && tar -cf ../link.tar . && cd - && tar -xpf "
     "../../link.tar");
  expectUnpacked("");
  EXPECT_EQ(sh("readlink docs/link"), "one.txt\n");
}

TEST_F(MountedArchives, TarUpdatesAndAddsToAnArchiveOfTheVolume) {
  sh("cp a.tar b.tar && tar --update -f b.tar letter.txt && tar --append -f b.tar docs &&"
     " tar -tf b.tar | grep -qx letter.txt && tar -tf b.tar | grep -qx docs/deep/two.txt &&"
     " tar --delete -f b.tar letter.txt && ! tar -tf b.tar | grep -qx letter.txt");
}

TEST_F(MountedArchives, TarCannotAddToAnArchiveOnTheDiscUntilThatHasBeenCopied) {
  shFails("tar --update -f a.tar letter.txt");
  EXPECT_FALSE(exists(trees.overlay() + "/a.tar"));
  sh("mv a.tar x && mv x a.tar && tar --update -f a.tar letter.txt && tar -tf a.tar | grep -qx "
     "letter.txt");
}

TEST_F(MountedArchives, UnzipUnpacksOverTheDisc) {
  sh("unzip -qo a.zip");
  expectUnpacked("");
  sh("mkdir away && unzip -q a.zip -d away");
  expectUnpacked("/away");
}

TEST_F(MountedArchives, ZipPacksAndUpdatesAnArchiveOfTheVolume) {
  sh("zip -qr new.zip docs && unzip -tq new.zip && zip -q new.zip letter.txt && unzip -tq new.zip "
     "&&"
     " zip -qd new.zip docs/one.txt && ! unzip -l new.zip | grep -q one.txt");
  EXPECT_EQ(sh("ls -A"), "a.7z\na.tar\na.tgz\na.zip\ndocs\nletter.txt\nnew.zip\n");
}

TEST_F(MountedArchives, ZipCannotUpdateAnArchiveOnTheDiscUntilThatHasBeenCopied) {
  EXPECT_NE(shFails("zip -q a.zip letter.txt").find("Read-only file system"), std::string::npos);
  sh("unzip -tq a.zip && mv a.zip x && mv x a.zip && zip -q a.zip letter.txt && unzip -tq a.zip");
}

TEST_F(MountedArchives, SevenZipPacksUnpacksAndUpdatesAnArchiveOnTheDiscToo) {
  sh("7z a a.7z letter.txt && 7z t a.7z && 7z l a.7z | grep -q letter.txt");
  EXPECT_TRUE(exists(trees.overlay() + "/a.7z"));
  sh("7z x -y a.7z && 7z a new.7z docs && 7z t new.7z && 7z d new.7z docs/one.txt");
  expectUnpacked("");
}

}  // namespace
}  // namespace kelvane::tests

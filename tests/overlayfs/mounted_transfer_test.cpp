// SPDX-License-Identifier: GPL-2.0-or-later
// Programs that copy and move whole trees to, from and on a mounted volume.
#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedTransfer : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/docs/one.txt", "one\n");
    trees.addDiscFile("/docs/two.txt", "two\n");
    trees.addDiscFile("/docs/deep/three.txt", "three\n");
    mount();
  }
};

TEST_F(MountedTransfer, CopyWithAllAttributesKeepsThem) {
  sh("mkdir ../src && echo x > ../src/f && chmod 751 ../src/f && ln -s f ../src/l &&"
     " touch -d '1999-12-31 23:59:58' ../src/f ../src && cp -a ../src copied");
  const auto status = statusOf(at("/copied/f"));
  EXPECT_EQ(status.st_mode & 0777, 0751U);
  EXPECT_EQ(status.st_mtime, statusOf(trees.root() + "/Volumes/src/f").st_mtime);
  EXPECT_EQ(statusOf(at("/copied")).st_mtime, status.st_mtime);
}

TEST_F(MountedTransfer, ADiscTreeIsCopiedAwayWholeAndBackOverItself) {
  sh("cp -a docs ../away && diff -r docs ../away && cp -a ../away/. docs/ && diff -r docs ../away");
  sh("cp -a docs inside && diff -r docs inside");
}

TEST_F(MountedTransfer, CopyTriesToShareBlocksAndCopiesThem) {
  sh("cp --reflink=auto docs/one.txt c && cmp docs/one.txt c && cp --sparse=always c d && cmp c d");
  EXPECT_NE(shFails("cp --reflink=always docs/one.txt e").find("not supported"), std::string::npos);
}

TEST_F(MountedTransfer, MoveFromTheDiscToElsewhereAndBack) {
  sh("mv docs ../elsewhere && [ ! -e docs ] && cat ../elsewhere/deep/three.txt && mv ../elsewhere "
     "docs && mv docs/one.txt ../one && mv ../one docs/one.txt");
  EXPECT_EQ(sh("cat docs/one.txt docs/two.txt docs/deep/three.txt"), "one\ntwo\nthree\n");
}

TEST_F(MountedTransfer, InstallReplacesAFileOfTheDisc) {
  sh("echo new > ../new && install -m 640 ../new docs/one.txt && install -d a/b");
  EXPECT_EQ(contentOf(at("/docs/one.txt")), "new\n");
  EXPECT_EQ(statusOf(at("/docs/one.txt")).st_mode & 0777, 0640U);
}

TEST_F(MountedTransfer, DdWritesAndReadsBack) {
  sh("dd if=/dev/urandom of=../bytes bs=100k count=30 && dd if=../bytes of=docs/one.txt bs=64k"
     " && cmp ../bytes docs/one.txt && dd if=docs/one.txt of=copy bs=4k skip=3 count=5 &&"
     " dd if=../bytes bs=4k skip=3 count=5 | cmp - copy &&"
     " dd if=../bytes of=docs/one.txt bs=4k seek=2 count=1 conv=notrunc,fsync");
}

TEST_F(MountedTransfer, ADiscImageOnTheVolumeIsWrittenAndRead) {
  sh("genisoimage -quiet -r -o image.iso docs && isoinfo -R -i image.iso -x /deep/three.txt");
}

TEST_F(MountedTransfer, RsyncTwiceCopiesATreeAndThenFindsNothingToDo) {
  sh("mkdir -p ../src/docs ../src/photos && echo synced > ../src/docs/one.txt &&"
     " echo p > '../src/photos/Grüße [1].jpg' && ln -s one.txt ../src/docs/l &&"
     " touch -d '2001-02-03 04:05:06' ../src/docs ../src/docs/one.txt && rsync -a ../src/ ./");
  EXPECT_EQ(contentOf(at("/docs/one.txt")), "synced\n");
  EXPECT_EQ(contentOf(at("/docs/two.txt")), "two\n");
  EXPECT_EQ(contentOf(at("/photos/Grüße [1].jpg")), "p\n");
  const std::string second = sh("rsync -ai ../src/ ./ | grep -v '^.d..t.* \\./$' || true");
  EXPECT_EQ(second, "");
  EXPECT_EQ(statusOf(trees.overlay()).st_mode & 0777, 0700U);
}

TEST_F(MountedTransfer, RsyncOntoUnchangedFilesOfTheDiscCannotSetTheirPermissions) {
  sh("cp -a docs ../src && chmod -R u=rwX,go=rX ../src");
  const std::string output = shFails("rsync -a ../src/ docs/ || { echo status $?; false; }");
  EXPECT_NE(output.find("failed to set permissions"), std::string::npos) << output;
  EXPECT_NE(output.find("status 23"), std::string::npos) << output;
  EXPECT_FALSE(exists(trees.overlay() + "/docs/one.txt"));
  // What differs is replaced all the same, and without permissions nothing is wrong.
  sh("echo changed > ../src/two.txt && rsync -a --no-perms ../src/ docs/ && rsync -ac --no-perms "
     "--delete ../src/ docs/");
  EXPECT_EQ(sh("cat docs/one.txt docs/two.txt"), "one\nchanged\n");
}

TEST_F(MountedTransfer, RsyncDeletesAndKeepsBackups) {
  sh("mkdir ../src && echo newer text > ../src/one.txt && rsync -a --no-perms --delete --backup"
     " --suffix=.old ../src/ docs/ && cat docs/one.txt docs/one.txt.old docs/two.txt.old");
  EXPECT_EQ(sh("cd docs && find . -name '*.txt'"), "./one.txt\n");
}

TEST_F(MountedTransfer, RsyncInPlaceChangesFilesOfTheVolumeButNotOfTheDisc) {
  sh("mkdir ../src && echo a longer text > ../src/own.txt && echo text > docs/own.txt &&"
     " rsync -a --inplace --no-whole-file ../src/ docs/ && cmp ../src/own.txt docs/own.txt");
  sh("echo changed, and longer > ../src/one.txt");
  EXPECT_NE(shFails("rsync -a --inplace ../src/ docs/").find("Read-only file system"),
            std::string::npos);
  EXPECT_EQ(contentOf(at("/docs/one.txt")), "one\n");
  sh("rsync -a ../src/ docs/ && cmp ../src/one.txt docs/one.txt");
}

TEST_F(MountedTransfer, PythonCopiesMovesAndRemovesTrees) {
  sh("python3 -c 'import shutil as s, os\n"
     "s.copytree(\"docs\", \"copy\"); s.move(\"docs\", \"moved\")\n"
     "s.copy2(\"moved/one.txt\", \"moved/two.txt\")\n"
     "s.copyfile(\"moved/deep/three.txt\", \"moved/one.txt\")\n"
     "s.rmtree(\"moved/deep\"); os.replace(\"copy/one.txt\", \"moved/two.txt\")\n"
     "assert not os.path.exists(\"docs\")'");
  EXPECT_EQ(sh("cat moved/one.txt moved/two.txt; find . -type f | sort"),
            "three\none\n./copy/deep/three.txt\n./copy/two.txt\n./moved/one.txt\n"
            "./moved/two.txt\n");
}

}  // namespace
}  // namespace kelvane::tests

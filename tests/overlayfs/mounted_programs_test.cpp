// SPDX-License-Identifier: GPL-2.0-or-later
// Programs as users run them, on a mounted volume over a disc.
#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedPrograms : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/letter.txt", "from the disc\n");
    trees.addDiscFile("/docs/one.txt", "one\n");
    trees.addDiscFile("/docs/two.txt", "two\n");
    trees.addDiscFile("/docs/deep/three.txt", "three\n");
    trees.addDiscDirectory("/empty");
    mount();
  }
};

TEST_F(MountedPrograms, CopyOverADiscFileReplacesItsContent) {
  sh("echo new > ../fresh && cp ../fresh letter.txt");
  EXPECT_EQ(contentOf(at("/letter.txt")), "new\n");
  EXPECT_EQ(contentOf(trees.overlay() + "/letter.txt"), "new\n");
  EXPECT_EQ(contentOf(trees.disc() + "/letter.txt"), "from the disc\n");
}

TEST_F(MountedPrograms, CopyOverAnOverlayFileReplacesItsContent) {
  sh("echo a long first version > notes && echo short > ../fresh && cp ../fresh notes");
  EXPECT_EQ(contentOf(at("/notes")), "short\n");
}

TEST_F(MountedPrograms, RedirectionOverADiscFileReplacesItsContent) {
  sh("echo redirected > docs/one.txt");
  EXPECT_EQ(contentOf(at("/docs/one.txt")), "redirected\n");
}

TEST_F(MountedPrograms, WritingToATemporaryNameAndRenamingReplacesADiscFile) {
  sh("echo safe > docs/.one.tmp && mv docs/.one.tmp docs/one.txt");
  EXPECT_EQ(contentOf(at("/docs/one.txt")), "safe\n");
  EXPECT_EQ(sh("ls -A docs"), "deep\none.txt\ntwo.txt\n");
}

TEST_F(MountedPrograms, AppendingToAnOverlayFileAddsAtItsEnd) {
  sh("echo first > log && echo second >> log && echo third >> log");
  EXPECT_EQ(contentOf(at("/log")), "first\nsecond\nthird\n");
}

TEST_F(MountedPrograms, AppendingToADiscFileFailsAtTheOpenAndChangesNothing) {
  EXPECT_NE(shFails("echo more >> letter.txt").find("Read-only file system"), std::string::npos);
  EXPECT_EQ(contentOf(at("/letter.txt")), "from the disc\n");
  EXPECT_FALSE(exists(trees.overlay() + "/letter.txt"));
}

TEST_F(MountedPrograms, RemovingATreeOfTheDiscLeavesNothingOfIt) {
  sh("rm -r docs");
  EXPECT_EQ(sh("ls -A"), "empty\nletter.txt\n");
  EXPECT_FALSE(exists(at("/docs/one.txt")));
  ASSERT_TRUE(volume->unmountAndWait());
  const std::string list = contentOf(trees.hideListFile());
  for (const std::string path : {"/docs", "/docs/one.txt", "/docs/deep", "/docs/deep/three.txt"}) {
    EXPECT_NE((list + "\n").find(trees.overlay() + path + "\n"), std::string::npos) << path;
  }
}

TEST_F(MountedPrograms, RemovingATreeThatWasAddedToLeavesNothingOfIt) {
  sh("echo x > docs/new && mkdir docs/sub && echo y > docs/sub/z && rm -r docs");
  EXPECT_EQ(sh("ls -A"), "empty\nletter.txt\n");
}

TEST_F(MountedPrograms, MkdirWithParentsMakesAllOfThemBelowADirectoryOfTheDisc) {
  sh("mkdir -p docs/deep/er/and/deeper new/one && touch docs/deep/er/and/deeper/file");
  EXPECT_TRUE(exists(trees.overlay() + "/docs/deep/er/and/deeper/file"));
  EXPECT_EQ(sh("ls docs/deep"), "er\nthree.txt\n");
  sh("mkdir -p docs/deep");
  EXPECT_NE(shFails("mkdir docs").find("File exists"), std::string::npos);
}

TEST_F(MountedPrograms, FindDeletesEverything) {
  sh("echo x > docs/new && find . -mindepth 1 -delete");
  EXPECT_EQ(sh("ls -A"), "");
}

TEST_F(MountedPrograms, AProgramIsCompiledMadeAndRun) {
  sh("mkdir src && cd src && printf '#include <stdio.h>\\nint main(void) { return puts(\"built\") "
     "< 0; "
     "}\\n' > main.c && printf 'program: main.c\\n\\tcc -g -o program main.c\\n' > Makefile && "
     "make");
  EXPECT_EQ(sh("src/program && make -q -C src"), "built\n");
  sh("cd src && strip program && ./program && rm program && make && cc -shared -fPIC -o lib.so "
     "main.c");
}

TEST_F(MountedPrograms, ChmodOfATreeOfTheDiscChangesDirectoriesAndRefusesFiles) {
  sh("chmod -R u+w docs && chmod -R a+rX docs");  // So they are shown: nothing changes.
  EXPECT_NE(shFails("chmod -R 755 docs").find("Read-only file system"), std::string::npos);
  EXPECT_EQ(statusOf(at("/docs/deep")).st_mode & 0777, 0755U);
  EXPECT_EQ(statusOf(at("/docs/one.txt")).st_mode & 0777, 0666U);
  sh("cp -a docs x && rm -r docs && mv x docs && chmod -R 755 docs");
  EXPECT_EQ(statusOf(at("/docs/deep/three.txt")).st_mode & 0777, 0755U);
}

TEST_F(MountedPrograms, TouchMakesFilesAndRefusesToDateAFileOfTheDisc) {
  sh("touch new docs/new && touch -d 2001-02-03 new docs && touch -r new docs/new");
  EXPECT_NE(shFails("touch letter.txt").find("Read-only file system"), std::string::npos);
  sh("mv letter.txt x && mv x letter.txt && touch letter.txt");
}

TEST_F(MountedPrograms, LinksAreSymbolicOnly) {
  sh("ln -s docs/one.txt l && cat l && ln -sf docs/two.txt l && cat l && ln -sr docs/one.txt "
     "docs/deep/up && cat docs/deep/up");
  EXPECT_NE(shFails("ln letter.txt hard").find("Operation not permitted"), std::string::npos);
  EXPECT_NE(shFails("mkfifo pipe").find("Operation not permitted"), std::string::npos);
}

TEST_F(MountedPrograms, FilesWithAndWithoutReservedSpace) {
  sh("fallocate -l 1M f && [ $(stat -c %s f) = 1048576 ] && truncate -s 10M g && echo x >> g &&"
     " mktemp -p . && split -b 300k f part. && cat part.* | cmp - f && shred -u f && sync -f .");
}

TEST_F(MountedPrograms, TreesAreSearchedComparedAndMeasured) {
  EXPECT_EQ(sh("grep -rl two . && find . -name 'th*' -size -1k -o -newer letter.txt -name x"),
            "./docs/two.txt\n");
  sh("du -s . && df . && diff -r docs docs && [ $(cat docs/*.txt | md5sum | wc -l) = 1 ]");
}

TEST_F(MountedPrograms, NamesOfAllKindsAreKept) {
  const std::string hundred(100, 'n');
  const std::string longest(255, 'm');
  const std::vector<std::string> names = {"with space", "Größe", "[brackets] {braces}", hundred,
                                          longest,      "a\nb",  "bytes \xff\xfe",      "*?\\"};
  for (const std::string& name : names) writeFile(at("/empty/" + name), name);
  for (const std::string& name : names) EXPECT_EQ(contentOf(at("/empty/" + name)), name);
  EXPECT_EQ(namesIn(at("/empty")).size(), names.size());
  EXPECT_NE(shFails("touch " + std::string(256, 'x')).find("File name too long"),
            std::string::npos);
}

TEST_F(MountedPrograms, EightProgramsAtOnceDoNotDisturbEachOther) {
  const std::string one =
      "d=$PWD/work$1; mkdir -p $d; for i in $(seq 30); do echo \"$1 $i\" > $d/f$i; mv $d/f$i "
      "$d/g$i;"
      " cp docs/one.txt $d/copy$i; ls $d docs >/dev/null; rm $d/copy$i;"
      " [ \"$(cat $d/g$i)\" = \"$1 $i\" ] || exit 1; done";
  sh("for n in 1 2 3 4 5 6 7 8; do sh -c '" + one +
     "' sh $n & pids=\"$pids $!\"; done;"
     " for p in $pids; do wait $p || exit 1; done");
  EXPECT_EQ(sh("cat work*/g* | wc -l"), "240\n");
}

TEST_F(MountedPrograms, EightProgramsRenamingOverOneNameLeaveOneOfTheirFiles) {
  const std::string one =
      "for i in $(seq 40); do echo whole > docs/.t$1 && mv -f docs/.t$1 docs/one.txt || exit 1;"
      " [ \"$(cat docs/one.txt)\" = whole ] || exit 1; done";
  sh("echo whole > docs/one.txt; for n in 1 2 3 4 5 6 7 8; do sh -c '" + one +
     "' sh $n & pids=\"$pids $!\"; done; for p in $pids; do wait $p || exit 1; done");
  EXPECT_EQ(sh("ls -A docs"), "deep\none.txt\ntwo.txt\n");
}

}  // namespace
}  // namespace kelvane::tests

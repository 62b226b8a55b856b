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

TEST_F(MountedPrograms, AnArchiveUnpacksOverTheDisc) {
  sh("mkdir ../src ../src/docs ../src/added && echo packed > ../src/docs/one.txt &&"
     " echo a > ../src/added/a && chmod 640 ../src/added/a && ln -s one.txt ../src/docs/link &&"
     " tar -C ../src -cf ../src.tar . && tar xf ../src.tar && tar df ../src.tar");
  EXPECT_EQ(contentOf(at("/docs/one.txt")), "packed\n");
  EXPECT_EQ(statusOf(at("/added/a")).st_mode & 0777, 0640U);
  EXPECT_EQ(sh("readlink docs/link"), "one.txt\n");
}

TEST_F(MountedPrograms, RsyncTwiceCopiesATreeAndThenFindsNothingToDo) {
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

TEST_F(MountedPrograms, CopyWithAllAttributesKeepsThem) {
  sh("mkdir ../src && echo x > ../src/f && chmod 751 ../src/f && ln -s f ../src/l &&"
     " touch -d '1999-12-31 23:59:58' ../src/f ../src && cp -a ../src copied");
  const auto status = statusOf(at("/copied/f"));
  EXPECT_EQ(status.st_mode & 0777, 0751U);
  EXPECT_EQ(status.st_mtime, statusOf(trees.root() + "/Volumes/src/f").st_mtime);
  EXPECT_EQ(statusOf(at("/copied")).st_mtime, status.st_mtime);
}

TEST_F(MountedPrograms, ADiscTreeIsCopiedAwayWhole) {
  sh("cp -a docs ../away && diff -r docs ../away");
}

TEST_F(MountedPrograms, GitClonesAndCommits) {
  if (runShell("git --version").status != 0) GTEST_SKIP() << "git is not installed";
  sh("export HOME=$PWD/.. GIT_AUTHOR_NAME=a GIT_AUTHOR_EMAIL=a@b GIT_COMMITTER_NAME=a"
     " GIT_COMMITTER_EMAIL=a@b; git init -q repo && cd repo && echo 1 > f && git add f &&"
     " git commit -qm one && cd .. && git clone -q repo clone && cd clone && echo 2 > f &&"
     " git commit -qam two && git push -q origin HEAD:refs/heads/two && git fsck");
}

TEST_F(MountedPrograms, SedInPlaceEditsADiscFile) {
  sh("sed -i s/disc/volume/ letter.txt");
  EXPECT_EQ(contentOf(at("/letter.txt")), "from the volume\n");
}

TEST_F(MountedPrograms, FindDeletesEverything) {
  sh("echo x > docs/new && find . -mindepth 1 -delete");
  EXPECT_EQ(sh("ls -A"), "");
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

TEST_F(MountedPrograms, SqliteKeepsADatabase) {
  if (runShell("sqlite3 --version").status != 0) GTEST_SKIP() << "sqlite3 is not installed";
  EXPECT_EQ(sh("sqlite3 data.db 'create table t(a); insert into t values(1),(2);"
               " delete from t where a=1; vacuum; select a from t; pragma integrity_check;'"),
            "2\nok\n");
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

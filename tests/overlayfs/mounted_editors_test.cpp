// SPDX-License-Identifier: GPL-2.0-or-later
// Programs that change a file's text, each in its own way, over files of the disc and of the
// overlay. Editors run on a terminal, as users run them.
#include <QByteArray>
#include <QFile>
#include <QSaveFile>
#include <QString>

#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

constexpr char kAnswer[] = "typed\nfrom the disc\nsecond line\n";

class MountedEditors : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/letter.txt", "from the disc\nsecond line\n");
    trees.addDiscFile("/empty.txt", "");
    mount();
    sh("cp letter.txt own.txt");
  }

  /// Types `keys` into a program once its screen shows "second line".
  void type(const std::string& keys, const std::string& program) {
    const std::string home = trees.root() + "/home";
    sh("mkdir -p " + home + " && HOME=" + home +
       " LC_ALL=C.UTF-8 python3 -B " KELVANE_SOURCE_DIR
       "/tests/overlayfs/type_into.py 'second line' " +
       keys + " -- " + program);
  }
  void vim(const std::string& setting, const std::string& file) {
    type("'Otyped\\x1b' ':wq\\r'", "vim -c 'set " + setting + "' " + file);
  }
  void nano(const std::string& options, const std::string& file) {
    type("'typed\\r' '\\x0f' '\\r' '\\x18'", "nano " + options + " " + file);
  }
  /// Both files hold what was typed, the overlay has them, and nothing else is left beside them.
  void expectBothSaved(const std::string& listing = "empty.txt\nletter.txt\nown.txt\n") {
    for (const std::string name : {"/letter.txt", "/own.txt"}) {
      EXPECT_EQ(contentOf(at(name)), kAnswer) << name;
      EXPECT_EQ(contentOf(trees.overlay() + name), kAnswer) << name;
    }
    EXPECT_EQ(sh("ls -A"), listing);
    ASSERT_TRUE(volume->unmountAndWait());
    // The new session has the saved file at the old one's place: nothing is to be hidden.
    EXPECT_EQ(contentOf(trees.hideListFile()), "");
  }
};

TEST_F(MountedEditors, VimSavesAsItDoesByItself) {
  vim("backupskip=", "letter.txt");
  vim("backupskip=", "own.txt");
  expectBothSaved();
}

TEST_F(MountedEditors, VimSavesWithoutABackupOfTheOldText) {
  vim("nowritebackup", "letter.txt");
  vim("nowritebackup", "own.txt");
  expectBothSaved();
}

TEST_F(MountedEditors, VimSavesWhereItRenamesTheOldFile) {
  vim("backupskip= backupcopy=no", "letter.txt");
  vim("backupskip= backupcopy=no", "own.txt");
  expectBothSaved();
}

TEST_F(MountedEditors, VimSavesAndKeepsACopyOfTheOldFile) {
  vim("backupskip= backup backupcopy=yes", "letter.txt");
  vim("backupskip= backup backupcopy=yes", "own.txt");
  EXPECT_EQ(contentOf(at("/letter.txt~")), "from the disc\nsecond line\n");
  expectBothSaved("empty.txt\nletter.txt\nletter.txt~\nown.txt\nown.txt~\n");
}

TEST_F(MountedEditors, VimFillsAnEmptyFileOfTheDisc) {
  sh("vim -es -c 'set nowritebackup' -c 'normal ityped' -c wq empty.txt");
  EXPECT_EQ(contentOf(at("/empty.txt")), "typed\n");
}

TEST_F(MountedEditors, NanoSaves) {
  nano("", "letter.txt");
  nano("", "own.txt");
  expectBothSaved();
}

TEST_F(MountedEditors, NanoSavesAndKeepsABackup) {
  nano("-B", "letter.txt");
  nano("-B", "own.txt");
  EXPECT_EQ(contentOf(at("/letter.txt~")), "from the disc\nsecond line\n");
  expectBothSaved("empty.txt\nletter.txt\nletter.txt~\nown.txt\nown.txt~\n");
}

TEST_F(MountedEditors, SedInPlaceEdits) {
  sh("sed -i '1i typed' letter.txt own.txt");
  expectBothSaved();
}

TEST_F(MountedEditors, PerlInPlaceEditsAndKeepsABackup) {
  sh("perl -i.bak -pe 'print \"typed\\n\" if $. == 1; close ARGV if eof' letter.txt own.txt");
  EXPECT_EQ(contentOf(at("/letter.txt.bak")), "from the disc\nsecond line\n");
  expectBothSaved("empty.txt\nletter.txt\nletter.txt.bak\nown.txt\nown.txt.bak\n");
}

TEST_F(MountedEditors, PatchChangesFiles) {
  for (const std::string name : {"letter.txt", "own.txt"}) {
    sh("printf '0a1\\n> typed\\n' | patch -s " + name);
  }
  expectBothSaved();
}

TEST_F(MountedEditors, SortWritesOntoItsInput) {
  sh("for f in letter.txt own.txt; do echo typed | cat - $f > ../in && sort -r -o $f $f && sort -o "
     "$f $f; done");
  EXPECT_EQ(contentOf(at("/letter.txt")), "from the disc\nsecond line\n");
  EXPECT_EQ(contentOf(trees.overlay() + "/letter.txt"), "from the disc\nsecond line\n");
}

TEST_F(MountedEditors, QtProgramsSaveThroughANewFile) {
  for (const std::string name : {"/letter.txt", "/own.txt"}) {
    QSaveFile file(QString::fromStdString(at(name)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << file.errorString().toStdString();
    file.write(kAnswer);
    ASSERT_TRUE(file.commit()) << file.errorString().toStdString();
  }
  expectBothSaved();
}

TEST_F(MountedEditors, QtProgramsSaveDirectly) {
  for (const std::string name : {"/letter.txt", "/own.txt"}) {
    QFile file(QString::fromStdString(at(name)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << file.errorString().toStdString();
    file.write(kAnswer);
    file.close();
    EXPECT_EQ(file.error(), QFile::NoError);
  }
  expectBothSaved();
}

TEST_F(MountedEditors, WhoChangesADiscFileWhereItStandsIsToldSoAndChangesNothing) {
  for (const std::string command :
       {"python3 -c 'open(\"letter.txt\", \"r+b\")'", "python3 -c 'open(\"letter.txt\", \"ab\")'",
        "dd if=/dev/zero of=letter.txt bs=4 count=1 conv=notrunc", "truncate -s 5 letter.txt",
        "fallocate -l 1M letter.txt", "shred -n 1 letter.txt", "echo more >> letter.txt"}) {
    EXPECT_NE(shFails(command).find("Read-only file system"), std::string::npos) << command;
  }
  EXPECT_EQ(contentOf(at("/letter.txt")), "from the disc\nsecond line\n");
  EXPECT_FALSE(exists(trees.overlay() + "/letter.txt"));
}

TEST_F(MountedEditors, OnceADiscFileHasBeenMovedAwayAndBackItCanBeChangedWhereItStands) {
  sh("mv letter.txt x && mv x letter.txt && touch letter.txt && chmod 600 letter.txt &&"
     " echo more >> letter.txt && python3 -c 'open(\"letter.txt\", \"r+b\").write(b\"FROM\")'");
  EXPECT_EQ(contentOf(at("/letter.txt")), "FROM the disc\nsecond line\nmore\n");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(contentOf(trees.hideListFile()), "");
}

}  // namespace
}  // namespace kelvane::tests

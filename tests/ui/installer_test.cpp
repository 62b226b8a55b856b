// SPDX-License-Identifier: GPL-2.0-or-later
// The button "Install" of the alert about missing user-space file systems leads to the
// distribution's installer of packages, here one that notes how it was called.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "ui/window_test.h"

namespace kelvane {
namespace {

using namespace kelvane::testing;

class Installer : public WindowTest {
 protected:
  Installer() : path_(qgetenv("PATH")) {}
  ~Installer() override { qputenv("PATH", path_); }

  /// From now on these are the only programs there are, besides a shell.
  void provide(const QStringList& programs) {
    for (const QString& name : programs) {
      QFile program(folder_.filePath(name));
      ASSERT_TRUE(program.open(QIODevice::WriteOnly));
      program.write("#!/bin/sh\necho \"${0##*/} $*\" >>\"" + QFile::encodeName(note()) + "\"\n");
      program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    qputenv("PATH", QFile::encodeName(folder_.path()));
  }

  QString note() const { return folder_.filePath(QStringLiteral("note")); }
  std::string noted() const {
    QFile file(note());
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
  }

  static constexpr const char* kInstaller = KELVANE_LIBEXEC_DIR "/MacFUSE.pkg";

 private:
  QByteArray path_;
  QTemporaryDir folder_;
};

TEST_F(Installer, IsStartedByTheWindowAndShowsThePackage) {
  provide({"gnome-software", "plasma-discover"});
  window_.openFile(kInstaller);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !noted().empty(); }, 20000));
  EXPECT_EQ(noted(), "gnome-software --details-pkg=fuse3\n");
}

TEST_F(Installer, IsTheOneThatTheDesktopHas) {
  provide({"plasma-discover"});
  window_.openFile(kInstaller);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !noted().empty(); }, 20000));
  EXPECT_EQ(noted(), "plasma-discover --search fuse3\n");
}

TEST_F(Installer, AsksForTheRightsToInstallWhereThereIsNoOther) {
  provide({"pkexec", "apt-get"});
  window_.openFile(kInstaller);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !noted().empty(); }, 20000));
  EXPECT_EQ(noted(), "pkexec apt-get install -y fuse3\n");
}

TEST_F(Installer, SaysWhatToDoWhereThereIsNone) {
  provide({});
  QProcess installer;
  installer.start(QString::fromLatin1(kInstaller), QStringList());
  ASSERT_TRUE(installer.waitForFinished());
  EXPECT_EQ(installer.exitCode(), 1);
  EXPECT_THAT(installer.readAllStandardError().toStdString(), ::testing::HasSubstr("fuse3"));
}

}  // namespace
}  // namespace kelvane

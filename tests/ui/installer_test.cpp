// SPDX-License-Identifier: GPL-2.0-or-later
// The button "Install" of the alert about missing user-space file systems leads to the
// distribution's installer of packages, here one that notes how it was called.
#include <QProcess>
#include <QTest>

#include "ui/installers.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using namespace kelvane::testing;

class Installer : public WindowTest {
 protected:
  std::string noted() { return installers_.noted(); }

  /// The resource that the application opens.
  static constexpr const char* kInstaller = KELVANE_LIBEXEC_DIR "/MacFUSE.pkg";

  Installers installers_;
};

TEST_F(Installer, IsStartedByTheWindowAndShowsThePackage) {
  installers_.provide({"gnome-software", "plasma-discover"});
  window_.openFile(kInstaller);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !noted().empty(); }, 20000));
  EXPECT_EQ(noted(), "gnome-software --details-pkg=fuse3\n");
}

TEST_F(Installer, IsTheOneThatTheDesktopHas) {
  installers_.provide({"plasma-discover"});
  window_.openFile(kInstaller);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !noted().empty(); }, 20000));
  EXPECT_EQ(noted(), "plasma-discover --search fuse3\n");
}

TEST_F(Installer, AsksForTheRightsToInstallWhereThereIsNoOther) {
  installers_.provide({"pkexec", "apt-get"});
  window_.openFile(kInstaller);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !noted().empty(); }, 20000));
  EXPECT_EQ(noted(), "pkexec apt-get install -y fuse3\n");
}

TEST_F(Installer, SaysWhatToDoWhereThereIsNone) {
  installers_.provide({});
  QProcess installer;
  installer.start(QString::fromLatin1(kInstaller), QStringList());
  ASSERT_TRUE(installer.waitForFinished());
  EXPECT_EQ(installer.exitCode(), 1);
  EXPECT_THAT(installer.readAllStandardError().toStdString(), ::testing::HasSubstr("fuse3"));
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// The way from the start of the application to its list of discs, and where it ends before: with
// the real windows, worked by clicks and keys.
#include <QMessageBox>
#include <optional>
#include <string>
#include <vector>

#include "app/window_session_fixture.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "ui/installers.h"

namespace kelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kAgreedTo[] = "licenseShownForVersion";

class StartUp : public WindowSessionTest {
 protected:
  void adapt(ControllerServices& services) override {
    services.devices = [this] {
      note("drives");
      return std::vector<DRDevice*>();
    };
    services.drivesWillBeObserved = [this, observe = services.drivesWillBeObserved] {
      note("observers");
      observe();
    };
    services.userFileSystemIsAvailable = [this](std::string* reason) {
      note("file system");
      *reason = "The device /dev/fuse cannot be opened.";
      return hasFileSystem_;
    };
  }

  bool hasFileSystem_ = true;
  std::vector<std::string> notes_;
  kelvane::testing::Installers installers_;

 private:
  // With it goes what the user sees at that moment.
  void note(const std::string& event) {
    std::string seen;
    for (const char* name : {"licenseWindow", "mainWindow"}) {
      if (shown(name)) seen += std::string(" ") + name;
    }
    notes_.push_back(event + ":" + seen);
  }
};

TEST_F(StartUp, AgreementWindowFileSystemAndDrivesFollowEachOther) {
  when(isShown("licenseWindow"), [this] {
    EXPECT_EQ(shown("mainWindow"), nullptr);
    EXPECT_THAT(notes_, IsEmpty());
    click("licenseWindow", "agreeButton");
  });
  when([] { return shown("mainWindow") && QApplication::activeWindow() == shown("mainWindow"); },
       [this] {
         EXPECT_EQ(shown("licenseWindow"), nullptr);
         EXPECT_EQ(UserDefaults::standard().stringForKey(kAgreedTo),
                   Bundle::mainBundle().shortVersionString());
         quitByKey();
       });
  run();
  ASSERT_GE(notes_.size(), 3u);
  EXPECT_EQ(notes_[0], "file system: mainWindow");
  EXPECT_EQ(notes_[1], "drives: mainWindow");
  EXPECT_EQ(notes_[2], "observers: mainWindow");
}

TEST_F(StartUp, WhoHasAgreedIsNotAskedAgain) {
  agreeBeforehand();
  when(isReady, [] {
    EXPECT_EQ(shown("licenseWindow"), nullptr);
    quitByKey();
  });
  run();
}

TEST_F(StartUp, AfterAnUpdateTheAgreementIsShownAgain) {
  UserDefaults::standard().setString("0.0.1", kAgreedTo);
  when(isShown("licenseWindow"), [] { click("licenseWindow", "agreeButton"); });
  when(isReady, [] { quitByKey(); });
  run();
}

TEST_F(StartUp, WithoutAgreementNothingFollows) {
  when(isShown("licenseWindow"), [] { click("licenseWindow", "disagreeButton"); });
  run();
  EXPECT_THAT(notes_, IsEmpty());
  EXPECT_EQ(UserDefaults::standard().stringForKey(kAgreedTo), std::nullopt);
}

TEST_F(StartUp, ClosingTheAgreementIsNoAgreement) {
  when(isShown("licenseWindow"), [] { shown("licenseWindow")->close(); });
  run();
  EXPECT_THAT(notes_, IsEmpty());
  EXPECT_EQ(UserDefaults::standard().stringForKey(kAgreedTo), std::nullopt);
}

TEST_F(StartUp, InstallStartsTheInstallerAndEndsTheApplication) {
  agreeBeforehand();
  hasFileSystem_ = false;
  installers_.provide({"gnome-software"});
  when(alert, [] { click("alertSheet", "alertButton0"); });
  run();
  EXPECT_THAT(notes_, ElementsAre("file system: mainWindow")) << "the drives are left alone";
  EXPECT_TRUE(QTest::qWaitFor([this] { return !installers_.noted().empty(); }, 20000));
  EXPECT_EQ(installers_.noted(), "gnome-software --details-pkg=fuse3\n");
}

TEST_F(StartUp, QuitEndsTheApplicationAndInstallsNothing) {
  agreeBeforehand();
  hasFileSystem_ = false;
  installers_.provide({"gnome-software"});
  when(alert, [] {
    auto* box = qobject_cast<QMessageBox*>(alert());
    EXPECT_EQ(box->icon(), QMessageBox::Critical);
    EXPECT_TRUE(box->informativeText().contains(QStringLiteral("/dev/fuse")));
    click("alertSheet", "alertButton1");
  });
  run();
  EXPECT_THAT(notes_, ElementsAre("file system: mainWindow"));
  EXPECT_EQ(installers_.noted(), "");
}

TEST_F(StartUp, EscapeInTheAlertEndsTheApplicationAndInstallsNothing) {
  agreeBeforehand();
  hasFileSystem_ = false;
  installers_.provide({"gnome-software"});
  when(alert, [] { QTest::keyClick(alert(), Qt::Key_Escape); });
  run();
  EXPECT_EQ(installers_.noted(), "");
}

TEST_F(StartUp, NothingButTheAlertAnswersWhileTheFileSystemIsMissing) {
  agreeBeforehand();
  hasFileSystem_ = false;
  when(alert, [] {
    // The sheet is modal to the window, and stays.
    QTest::mouseClick(shown("mainWindow"), Qt::LeftButton);
    EXPECT_NE(alert(), nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), alert());
    click("alertSheet", "alertButton1");
  });
  run();
}

TEST_F(StartUp, TheMissingFileSystemIsToldBehindTheAgreement) {
  hasFileSystem_ = false;
  when(isShown("licenseWindow"), [] {
    EXPECT_EQ(alert(), nullptr);
    click("licenseWindow", "agreeButton");
  });
  when(alert, [] { click("alertSheet", "alertButton1"); });
  run();
}

TEST_F(StartUp, ClosingTheWindowQuitsWhereNoDiscIsOpen) {
  agreeBeforehand();
  when(isReady, [] { shown("mainWindow")->close(); });
  run();
}

/// With a disc in the drive, by a user who has agreed to the licence of an earlier version.
class StartUpWithDisc : public WindowSessionWithDisc {
 protected:
  StartUpWithDisc() { UserDefaults::standard().setString("0.0.1", kAgreedTo); }

  void adapt(ControllerServices& services) override {
    if (!hasFileSystem_) services.userFileSystemIsAvailable = [](std::string*) { return false; };
  }

  /// What is mounted, or was to be.
  static std::vector<std::string> volumes() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(paths::volumesDirectory())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  bool hasFileSystem_ = true;
};

TEST_F(StartUpWithDisc, TheDiscIsNotMountedBeforeTheUserHasAgreedAndIsOpenedThen) {
  when(isShown("licenseWindow"), [] {
    EXPECT_THAT(volumes(), IsEmpty());
    click("licenseWindow", "agreeButton");
  });
  when(isOpen(), [] { quitByKey(); });
  runWithDisc();
}

TEST_F(StartUpWithDisc, NothingIsMountedAndNobodyHearsOfTheDrivesWhereTheFileSystemIsMissing) {
  agreeBeforehand();
  hasFileSystem_ = false;
  when(alert, [] {
    EXPECT_THAT(volumes(), IsEmpty());
    DRDevice* drive = DRDevice::devices().front();
    drive->ejectMedia();
    DRNotificationCenter::currentRunLoopCenter().post(DRDeviceStatusChangedNotification, drive);
    // Behind the notification, which goes the same way.
    performOnMainThread([] {
      const auto* offer = shown("mainWindow")->findChild<QWidget*>("insertDiscButton");
      EXPECT_FALSE(offer->isVisible()) << "somebody has heard of the drive";
      EXPECT_EQ(shown("mainWindow")->findChildren<QMessageBox*>().size(), 1);
      click("alertSheet", "alertButton1");
    });
  });
  runWithDisc();
}

}  // namespace
}  // namespace kelvane::test

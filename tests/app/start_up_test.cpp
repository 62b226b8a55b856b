// SPDX-License-Identifier: GPL-2.0-or-later
// The way from the start of the application to its list of discs, and where it ends before: with
// the real windows, worked by clicks and keys.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/window_session.h"
#include "foundation/temporary_user_defaults.h"
#include "media/recorded_log.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/user_defaults.h"
#include "ui/installers.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kAgreedTo[] = "licenseShownForVersion";

class StartUp : public ::testing::Test {
 protected:
  /// What the user does, once the condition holds.
  void when(std::function<bool()> condition, std::function<void()> doThis) {
    steps_.emplace_back(std::move(condition), std::move(doThis));
  }

  /// Starts the application and lets it run until it quits.
  void run() {
    std::string error;
    auto core = ApplicationCore::create({}, DriveRegistry::RealDrives::Excluded, &error);
    ASSERT_NE(core, nullptr) << error;
    ControllerServices services = systemControllerServices(core->visibleMounts());
    services.devices = [this] {
      note("drives");
      return std::vector<DRDevice*>();
    };
    services.userFileSystemIsAvailable = [this](std::string* reason) {
      note("file system");
      *reason = "The device /dev/fuse cannot be opened.";
      return hasFileSystem_;
    };
    WindowSession session(std::move(core), std::move(services));
    performOnMainThread([&session] { session.start(); });
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [this] { goOn(); });
    user.start(5);
    QApplication::exec();
    EXPECT_THAT(steps_, IsEmpty()) << "the application has quit before";
  }

  static void agreeBeforehand() {
    UserDefaults::standard().setString(Bundle::mainBundle().shortVersionString(), kAgreedTo);
  }

  /// The window that is shown under this name, or null.
  static QWidget* shown(const char* name) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->objectName() == QLatin1String(name) && window->isVisible()) return window;
    }
    return nullptr;
  }
  static QWidget* alert() { return shown("alertSheet"); }
  static std::function<bool()> isShown(const char* name) {
    return [name] { return shown(name) != nullptr; };
  }
  static void click(const char* window, const char* button) {
    auto* found = shown(window)->findChild<QPushButton*>(QLatin1String(button));
    ASSERT_NE(found, nullptr);
    QTest::mouseClick(found, Qt::LeftButton);
  }
  /// Whether start-up is through, and the keyboard is the main window's.
  static bool isReady() {
    const QWidget* window = shown("mainWindow");
    return window != nullptr && QApplication::activeWindow() == window && alert() == nullptr;
  }
  static void quitByKey() {
    QTest::keySequence(shown("mainWindow"), QKeySequence(Qt::CTRL | Qt::Key_Q));
  }

  bool hasFileSystem_ = true;
  std::vector<std::string> notes_;
  TemporaryPrefix prefix_;
  TemporaryUserDefaults defaults_;
  kelvane::testing::Installers installers_;
  RecordedLog log_;

 private:
  // With it goes what the user sees at that moment.
  void note(const std::string& event) {
    std::string seen;
    for (const char* name : {"licenseWindow", "mainWindow"}) {
      if (shown(name)) seen += std::string(" ") + name;
    }
    notes_.push_back(event + ":" + seen);
  }

  // One step at a time: a step may open a window that waits for the next.
  void goOn() {
    if (steps_.empty() || !steps_.front().first()) return;
    const auto step = std::move(steps_.front().second);
    steps_.pop_front();
    step();
  }

  std::deque<std::pair<std::function<bool()>, std::function<void()>>> steps_;
};

TEST_F(StartUp, AgreementWindowFileSystemAndDrivesFollowEachOther) {
  when(isShown("licenseWindow"), [this] {
    EXPECT_EQ(shown("mainWindow"), nullptr);
    EXPECT_THAT(notes_, IsEmpty());
    click("licenseWindow", "agreeButton");
  });
  when(isReady, [this] {
    EXPECT_EQ(shown("licenseWindow"), nullptr);
    EXPECT_EQ(UserDefaults::standard().stringForKey(kAgreedTo),
              Bundle::mainBundle().shortVersionString());
    quitByKey();
  });
  run();
  ASSERT_GE(notes_.size(), 2u);
  EXPECT_EQ(notes_[0], "file system: mainWindow");
  EXPECT_EQ(notes_[1], "drives: mainWindow");
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

}  // namespace
}  // namespace kelvane::test

// SPDX-License-Identifier: GPL-2.0-or-later
// Quitting while a disc is open or burned: by keys and by closing the window, on an emulated drive.
#include <signal.h>
#include <unistd.h>

#include <QCloseEvent>
#include <QDialog>
#include <QListView>
#include <QMessageBox>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

#include "app/window_session_fixture.h"
#include "platform/foundation/paths.h"
#include "platform/recording/dr_device.h"
#include "platform/volumes/mount_table.h"
#include "ui/view_parts.h"

namespace kelvane::test {
namespace {

namespace fs = std::filesystem;

using ::testing::HasSubstr;
using ::testing::Not;

class Quit : public WindowSessionWithDisc {
 protected:
  /// The recorder that this process has started; it stands still from now on.
  static std::optional<pid_t> stoppedRecorder() {
    for (const auto& entry : fs::directory_iterator("/proc")) {
      std::error_code failure;
      const fs::path program = fs::read_symlink(entry.path() / "exe", failure);
      if (failure || program.filename() != "recorder") continue;
      std::ifstream status(entry.path() / "status");
      for (std::string line; std::getline(status, line);) {
        if (line != "PPid:\t" + std::to_string(getpid())) continue;
        const pid_t recorder = std::stoi(entry.path().filename());
        kill(recorder, SIGSTOP);
        return recorder;
      }
    }
    return std::nullopt;
  }

  static int listedDiscs() {
    return shown("mainWindow")->findChild<QListView*>("diskTableView")->model()->rowCount();
  }

  /// Erases the disc, which is open, and lets the recorder stand still in the middle of it.
  void beginErase(std::optional<pid_t>& recorder) {
    when(isOpen(), [] { press(Qt::CTRL | Qt::Key_E); });
    when(alert, [] { click("alertSheet", "alertButton0"); });
    when([&recorder] { return (recorder = stoppedRecorder()).has_value(); }, [] {});
  }

  /// What the system sends when the machine is shut down. The application has heard of it when
  /// `hasBeenHeard` holds.
  static void askToEnd() { raise(SIGTERM); }
  /// The event loop has turned, which it only does past a signal that has come.
  static std::function<bool()> hasBeenHeard() {
    constexpr int kLooks = 3;
    return [looks = 0]() mutable { return ++looks == kLooks; };
  }

  static QString alertText() { return qobject_cast<QMessageBox*>(alert())->text(); }

  void expectNothingIsLeft() const {
    EXPECT_FALSE(isMountPoint(paths::overlayMountPoint()));
    EXPECT_FALSE(fs::exists(paths::hiddenMountFolder()));
    for (const auto& entry : fs::directory_iterator(paths::temporaryDirectory())) {
      ADD_FAILURE() << entry.path() << " was left";
    }
  }
};

TEST_F(Quit, ClosesAnUnchangedDiscFirst) {
  when(isOpen(), [] { quitByKey(); });
  runWithDisc();
  expectNothingIsLeft();
  EXPECT_THAT(contents(), HasSubstr("first.txt"));
}

TEST_F(Quit, ByClosingTheWindowClosesAnUnchangedDiscFirstToo) {
  when(isOpen(), [] {
    EXPECT_FALSE(shown("mainWindow")->close()) << "it goes when the disc is closed";
    EXPECT_NE(shown("mainWindow"), nullptr);
  });
  runWithDisc();
  expectNothingIsLeft();
}

TEST_F(Quit, WithChangesWaitsForTheAnswerToDiscardThem) {
  when(isOpen(), [] {
    change();
    quitByKey();
  });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnCancelButton"); });
  runWithDisc();
  expectNothingIsLeft();
  EXPECT_THAT(contents(), Not(HasSubstr("second.txt")));
}

TEST_F(Quit, WithChangesWaitsForTheAnswerAndForTheBurn) {
  when(isOpen(), [] {
    change();
    shown("mainWindow")->close();
  });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnConfirmButton"); });
  when(isBurning, [] { EXPECT_EQ(shown("burnConfirmationPanel"), nullptr); });
  runWithDisc();
  expectNothingIsLeft();
  EXPECT_THAT(contents(), HasSubstr("second.txt"));
}

TEST_F(Quit, GoesOnOnlyOnceAFailedBurnHasBeenRead) {
  std::ofstream(disc_ + "/faults") << "on write: sense 3/73/03\n";
  when(isOpen(), [] {
    change();
    quitByKey();
  });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnConfirmButton"); });
  when(alert, [] {
    EXPECT_EQ(alertText(), localizedText("CDBurnError"));
    click("alertSheet", "alertButton0");
  });
  runWithDisc();
  EXPECT_THAT(log_.lines(), ::testing::Contains(::testing::StartsWith("CD burning failed")));
  expectNothingIsLeft();
}

// The alert about the failed burn may stand for hours, and the next disc opens by itself.
TEST_F(Quit, IsDecidedAnewWhereADiscHasBeenOpenedSince) {
  std::ofstream(disc_ + "/faults") << "on write: sense 3/73/03\n";
  const std::string nextDisc = prefix_.path() + "/next.kvdisc";
  discTool({"create", nextDisc, "--media", "cd-r"});
  when([] { return isReady() && listedDiscs() == 2; },
       [] { DRDevice::devices().back()->ejectMedia(); });
  when(isOpen(), [] {
    change();
    quitByKey();
  });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnConfirmButton"); });
  when([] { return alert() != nullptr && !DRDevice::devices().front()->mediaIsPresent(); },
       [] { DRDevice::devices().back()->loadMedia(); });
  when([] { return isMountPoint(paths::overlayMountPoint()); },
       [] {
         change();
         click("alertSheet", "alertButton0");
       });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnCancelButton"); });
  run({disc_, nextDisc});
  expectNothingIsLeft();
}

TEST_F(Quit, IsRefusedDuringABurnAndGrantedBehindIt) {
  std::optional<pid_t> recorder;
  when(isOpen(), [] {
    change();
    press(Qt::CTRL | Qt::Key_O);
  });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnConfirmButton"); });
  when([&recorder] { return (recorder = stoppedRecorder()).has_value(); },
       [&recorder] {
         quitByKey();
         EXPECT_FALSE(shown("mainWindow")->close());
         EXPECT_TRUE(isBurning());
         EXPECT_EQ(alert(), nullptr) << "it is refused by a beep and nothing else";
         kill(*recorder, SIGCONT);
       });
  when([] { return isReady() && !isBurning(); }, [] { quitByKey(); });
  runWithDisc();
  expectNothingIsLeft();
  EXPECT_THAT(contents(), HasSubstr("second.txt"));
}

TEST_F(Quit, ThatTheSystemAsksForDuringAnEraseComesWhenTheDiscIsBlank) {
  std::optional<pid_t> recorder;
  beginErase(recorder);
  when(isShown("eraseProgressPanel"), askToEnd);
  when(hasBeenHeard(), [&recorder] {
    EXPECT_NE(shown("mainWindow"), nullptr);
    EXPECT_NE(shown("eraseProgressPanel"), nullptr);
    kill(*recorder, SIGCONT);
  });
  runWithDisc();
  expectNothingIsLeft();
  EXPECT_THAT(discTool({"info", disc_}), HasSubstr("blank"));
}

TEST_F(Quit, ThatTheSystemAsksForDuringAnEraseComesOnlyOnceItsFailureHasBeenRead) {
  std::optional<pid_t> recorder;
  beginErase(recorder);
  when(isShown("eraseProgressPanel"), askToEnd);
  when(hasBeenHeard(), [&recorder] { kill(*recorder, SIGKILL); });
  when(alert, [] {
    EXPECT_EQ(alertText(), localizedText("EraseError"));
    click("alertSheet", "alertButton0");
  });
  runWithDisc();
  expectNothingIsLeft();
}

TEST_F(Quit, ThatAWindowHasRefusedIsForgottenAndTheNextOneIsDecidedAnew) {
  class Refusing : public QDialog {
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
  };
  std::unique_ptr<QDialog> refusing;
  // So that nothing is at stake.
  when(isOpen(), [] { press(Qt::CTRL | Qt::Key_O); });
  when([] { return isReady() && !DRDevice::devices().front()->mediaIsPresent(); },
       [&refusing] {
         refusing = std::make_unique<Refusing>();
         refusing->open();
         askToEnd();
       });
  when(hasBeenHeard(), [&refusing] {
    refusing.reset();
    EXPECT_NE(shown("mainWindow"), nullptr);
    DRDevice::devices().front()->loadMedia();
  });
  when(isOpen(), [] {
    change();
    EXPECT_FALSE(shown("mainWindow")->close()) << "its changes would be lost";
  });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnCancelButton"); });
  runWithDisc();
  expectNothingIsLeft();
}

TEST_F(Quit, IsRefusedWhileAProgramUsesTheVolumeAndForgottenThen) {
  auto user = std::make_unique<std::ofstream>();
  when(isOpen(), [&user] {
    user->open(paths::overlayMountPoint() + "/second.txt");
    quitByKey();
  });
  when(alert, [&user] {
    EXPECT_EQ(alertText(), localizedText("VolumeBusy"));
    user.reset();
    click("alertSheet", "alertButton0");
  });
  when(isReady, [] { press(Qt::CTRL | Qt::Key_O); });
  when(isShown("burnConfirmationPanel"),
       [] { click("burnConfirmationPanel", "burnCancelButton"); });
  // The application goes on: it was only the disc that was closed.
  when(
      [] {
        return isReady() && shown("mainWindow")->findChild<QWidget*>("messageView")->isVisible();
      },
      [] { quitByKey(); });
  runWithDisc();
  expectNothingIsLeft();
}

}  // namespace
}  // namespace kelvane::test

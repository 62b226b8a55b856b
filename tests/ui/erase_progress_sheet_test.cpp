// SPDX-License-Identifier: GPL-2.0-or-later
// The progress sheet of an erase, over erases by the real recorder on emulated discs.
#include <unistd.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QTest>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "desktop/fake_services.h"
#include "desktop/private_bus.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_erase.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive_registry.h"
#include "ui/dr_erase_progress_panel.h"
#include "ui/window_test.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane {
namespace {

using namespace kelvane::testing;
using virtualdrive::MediumKind;

constexpr int kFarTooLong = 60000;

class EraseProgressSheet : public WindowTest {
 protected:
  EraseProgressSheet() : folder_(std::filesystem::temp_directory_path() / "kverase-XXXXXX") {
    setenv("KELVANEFS_EXECUTABLE", KELVANE_BIN_DIR "/kelvanefs", 1);
    EXPECT_NE(mkdtemp(folder_.data()), nullptr);
    DriveRegistry::shared().reset();
    DriveRegistry::shared().setRealDrives(DriveRegistry::RealDrives::Excluded);
  }
  ~EraseProgressSheet() override {
    goOn();
    EXPECT_TRUE(sheetHasGone());
    DriveRegistry::shared().reset();
    std::filesystem::remove_all(folder_);
  }

  DRDevice* addDrive(MediumKind medium) {
    const std::string disc = folder_ + "/disc.kvdisc";
    std::string error;
    EXPECT_TRUE(virtualdrive::VirtualDrive::create(disc, {.medium = medium}, &error)) << error;
    return DriveRegistry::shared().addEmulatedDrive(disc, &error);
  }

  void begin(DRDevice* device) {
    window_.eraseProgressPanel().setDescription("Erasing the disc…");
    auto erase = DRErase::eraseForDevice(device);
    DRErase* started = erase.get();
    erase_ = started;
    window_.eraseProgressPanel().beginProgressSheetForErase(std::move(erase));
    recorder_ = static_cast<pid_t>(started->recorderProcessIdentifier());
  }

  /// An erase that stands still until it may go on: what is started as the recorder waits for that
  /// before it becomes the real one.
  void beginAndPause() {
    namespace fs = std::filesystem;
    const fs::path programs = fs::path(folder_) / "libexec/kelvanefs";
    fs::create_directories(programs);
    for (const auto& entry : fs::directory_iterator(KELVANE_LIBEXEC_DIR)) {
      if (entry.path().filename() == "recorder") continue;
      fs::create_symlink(entry.path(), programs / entry.path().filename());
    }
    std::ofstream(programs / "recorder")
        << "#!/bin/sh\n"
        << "until [ -e " << folder_ << "/go ]; do sleep 0.01; done\n"
        << "exec " KELVANE_LIBEXEC_DIR "/recorder \"$@\"\n";
    fs::permissions(programs / "recorder", fs::perms::owner_all);
    setenv("KELVANEFS_EXECUTABLE", (folder_ + "/bin/kelvanefs").c_str(), 1);
    begin(addDrive(MediumKind::CdRw));
    ASSERT_NE(recorder_, 0);
    ASSERT_NE(sheet(), nullptr);
  }

  void goOn() { std::ofstream(folder_ + "/go").close(); }

  void report(double fraction) {
    DREraseStatus status;
    status.DRStatusStateKey = DRStatusStateErasing;
    status.DRStatusPercentCompleteKey = fraction;
    DRNotificationCenter::currentRunLoopCenter().post(DREraseStatusChangedNotification, erase_,
                                                      status);
    QCoreApplication::processEvents();
  }

  QDialog* sheet() { return openSheet("eraseProgressPanel"); }
  QMessageBox* alert() { return qobject_cast<QMessageBox*>(openSheet("alertSheet")); }
  bool sheetHasGone() {
    return QTest::qWaitFor([this] { return sheet() == nullptr; }, kFarTooLong);
  }

  std::string folder_;
  const void* erase_ = nullptr;
  pid_t recorder_ = 0;
};

TEST_F(EraseProgressSheet, IsAWindowModalSheetWithTheDescription) {
  beginAndPause();
  EXPECT_EQ(sheet()->windowModality(), Qt::WindowModal);
  EXPECT_EQ(sheet()->findChild<QLabel*>("eraseDescriptionField")->text(), "Erasing the disc…");
  EXPECT_EQ(sheet()->accessibleName(), "Erasing the disc…");
}

TEST_F(EraseProgressSheet, ClosesByItselfWhenTheDiscIsErased) {
  begin(addDrive(MediumKind::CdRw));
  EXPECT_NE(sheet(), nullptr);
  EXPECT_TRUE(sheetHasGone());
  EXPECT_EQ(alert(), nullptr);
}

TEST_F(EraseProgressSheet, NeitherEscapeNorClosingEndsItWhileTheEraseRuns) {
  beginAndPause();
  QTest::keyClick(sheet(), Qt::Key_Escape);
  EXPECT_NE(sheet(), nullptr);
  QTest::keyClick(sheet(), Qt::Key_Return);
  EXPECT_NE(sheet(), nullptr);
  sheet()->close();
  EXPECT_NE(sheet(), nullptr);
  EXPECT_FALSE(sheet()->windowFlags().testFlag(Qt::WindowCloseButtonHint));
  goOn();
  EXPECT_TRUE(sheetHasGone());
}

TEST_F(EraseProgressSheet, BarMovesWithoutAnEndUntilTheDriveTellsHowFarItIs) {
  beginAndPause();
  auto* bar = sheet()->findChild<QProgressBar*>("eraseProgressIndicator");
  ASSERT_NE(bar, nullptr);
  EXPECT_EQ(bar->maximum(), 0);
  report(0.37);
  EXPECT_NEAR(static_cast<double>(bar->value()) / bar->maximum(), 0.37, 0.01);
  EXPECT_EQ(bar->accessibleName(), "Progress of the erasing");
}

TEST_F(EraseProgressSheet, RemainingTimeIsToldAndSpokenWhereTheDriveTellsHowFarItIs) {
  beginAndPause();
  const auto* remaining = sheet()->findChild<QLabel*>("eraseRemainingField");
  ASSERT_NE(remaining, nullptr);
  const QSize before = sheet()->size();
  report(0.4);
  EXPECT_EQ(remaining->text(), "") << "it is judged by what passes from here on";
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        report(0.9);
        return !remaining->text().isEmpty();
      },
      kFarTooLong));
  EXPECT_EQ(remaining->text(), "Less than a minute left");
  EXPECT_EQ(remaining->accessibleName(), "Less than a minute left");
  EXPECT_EQ(remaining->accessibleDescription(), "Remaining time");
  EXPECT_EQ(sheet()->size(), before);
  goOn();
  ASSERT_TRUE(sheetHasGone());
  std::filesystem::remove(folder_ + "/go");
  begin(DriveRegistry::shared().devices().front());
  report(0.5);
  EXPECT_EQ(remaining->text(), "") << "the next erase is judged by itself";
}

TEST_F(EraseProgressSheet, ItsProgressIsSeenInTheTitleUntilItEnds) {
  beginAndPause();
  report(0.37);
  EXPECT_EQ(window_.windowTitle(), "37% – KelvaneFS");
  // Another disc is opened or closed meanwhile.
  window_.setFrame(ContentView::MountedItem, kRightOfWindow, Movement::Direct);
  EXPECT_EQ(window_.windowTitle(), "37% – KelvaneFS");
  goOn();
  ASSERT_TRUE(sheetHasGone());
  EXPECT_EQ(window_.windowTitle(), "KelvaneFS");
}

TEST_F(EraseProgressSheet, EveryEraseBeginsAnew) {
  beginAndPause();
  report(0.9);
  goOn();
  ASSERT_TRUE(sheetHasGone());
  begin(DriveRegistry::shared().devices().front());
  ASSERT_NE(sheet(), nullptr);
  EXPECT_EQ(sheet()->findChild<QProgressBar*>("eraseProgressIndicator")->maximum(), 0);
}

TEST_F(EraseProgressSheet, FailureIsToldByAnAlertInItsPlace) {
  begin(addDrive(MediumKind::CdR));
  ASSERT_TRUE(sheetHasGone());
  ASSERT_NE(alert(), nullptr);
  EXPECT_EQ(alert()->text(), "The disc could not be erased");
  EXPECT_TRUE(alert()->informativeText().contains("not rewritable"));
  click(alert()->findChild<QWidget*>("alertButton0"));
  EXPECT_EQ(alert(), nullptr);
}

TEST_F(EraseProgressSheet, RecorderThatDiesIsAFailure) {
  beginAndPause();
  kill(recorder_, SIGKILL);
  ASSERT_TRUE(sheetHasGone());
  ASSERT_NE(alert(), nullptr);
  EXPECT_TRUE(alert()->informativeText().contains("signal 9"));
}

TEST_F(EraseProgressSheet, ItsEndIsToldWhereTheWindowIsNotInFront) {
  const test::PrivateBus bus;
  test::FakeNotifications desktop(bus.services());
  beginAndPause();
  QApplication::setActiveWindow(nullptr);
  goOn();
  ASSERT_TRUE(sheetHasGone());
  EXPECT_TRUE(QTest::qWaitFor([&desktop] { return desktop.shown.size() == 1; }, kFarTooLong));
  EXPECT_EQ(desktop.shown[0].summary, "The disc has been erased");
  EXPECT_EQ(desktop.shown[0].category, "transfer.complete");
}

TEST_F(EraseProgressSheet, ItsFailureIsToldWhereTheWindowIsNotInFront) {
  const test::PrivateBus bus;
  test::FakeNotifications desktop(bus.services());
  beginAndPause();
  QApplication::setActiveWindow(nullptr);
  kill(recorder_, SIGKILL);
  ASSERT_TRUE(sheetHasGone());
  EXPECT_TRUE(QTest::qWaitFor([&desktop] { return desktop.shown.size() == 1; }, kFarTooLong));
  EXPECT_EQ(desktop.shown[0].summary, "The disc could not be erased");
  EXPECT_EQ(desktop.shown[0].category, "transfer.error");
}

TEST_F(EraseProgressSheet, TheMachineStaysAwakeUntilTheEraseHasEnded) {
  const test::PrivateBus bus;
  test::FakeLoginManager manager(bus.services());
  beginAndPause();
  EXPECT_TRUE(QTest::qWaitFor([&manager] { return manager.held() == 1; }, kFarTooLong));
  EXPECT_THAT(manager.calls, ::testing::ElementsAre(
                                 "sleep:shutdown:idle | KelvaneFS | Erasing the disc… | block"));
  goOn();
  ASSERT_TRUE(sheetHasGone());
  EXPECT_TRUE(QTest::qWaitFor([&manager] { return manager.held() == 0; }, kFarTooLong));
}

TEST_F(EraseProgressSheet, TheMachineMaySleepAfterARecorderThatDied) {
  const test::PrivateBus bus;
  test::FakeLoginManager manager(bus.services());
  beginAndPause();
  EXPECT_TRUE(QTest::qWaitFor([&manager] { return manager.held() == 1; }, kFarTooLong));
  kill(recorder_, SIGKILL);
  ASSERT_TRUE(sheetHasGone());
  EXPECT_TRUE(QTest::qWaitFor([&manager] { return manager.held() == 0; }, kFarTooLong));
}

}  // namespace
}  // namespace kelvane

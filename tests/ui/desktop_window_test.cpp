// SPDX-License-Identifier: GPL-2.0-or-later
// The window among the services of the desktop.
#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include "desktop/fake_services.h"
#include "desktop/private_bus.h"
#include "foundation/turn_until.h"
#include "platform/foundation/strings_table.h"
#include "ui/opened_urls.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using namespace kelvane::testing;
using test::FakeFileManager;
using test::FakeLauncher;
using test::FakeNotifications;
using test::Manner;
using test::turnUntil;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DesktopWindow : public WindowTest {
 protected:
  /// Another application's window is in front.
  static void putBehind() { QApplication::setActiveWindow(nullptr); }

  test::PrivateBus bus_;
};

TEST_F(DesktopWindow, AVolumeIsShownByTheFileManagerAndByNobodyElse) {
  FakeFileManager manager(bus_.services());
  OpenedUrls opened(QStringLiteral("file"));
  const QTemporaryDir volume;
  window_.selectFile(volume.path().toStdString(), "/Volumes/");
  turnUntil([&manager] { return !manager.calls.empty(); });
  EXPECT_THAT(manager.calls, ElementsAre("ShowFolders file://" + volume.path().toStdString()));
  EXPECT_THAT(opened.addresses, IsEmpty());
}

TEST_F(DesktopWindow, WhereTheFileManagerRefusesTheVolumeIsOpenedLikeAFile) {
  FakeFileManager manager(bus_.services());
  manager.manner = Manner::Refuses;
  OpenedUrls opened(QStringLiteral("file"));
  window_.selectFile("/Volumes/tarnwick", "/Volumes/");
  turnUntil([&opened] { return !opened.addresses.empty(); });
  EXPECT_THAT(opened.addresses, ElementsAre("/Volumes/tarnwick"));
}

TEST_F(DesktopWindow, TheEndOfABurnIsToldWhereTheWindowIsNotInFront) {
  FakeNotifications desktop(bus_.services());
  putBehind();
  window_.burnDidEnd(BurnEnd::Succeeded);
  window_.burnDidEnd(BurnEnd::Failed);
  turnUntil([&desktop] { return desktop.shown.size() == 2; });
  EXPECT_EQ(desktop.shown[0].summary, "The changes are on the disc");
  EXPECT_EQ(desktop.shown[0].category, "transfer.complete");
  EXPECT_EQ(desktop.shown[1].summary, "The disc could not be written");
  EXPECT_EQ(desktop.shown[1].body, "The window of KelvaneFS tells why.");
}

TEST_F(DesktopWindow, WhoLooksAtTheWindowIsNotToldTwice) {
  FakeNotifications desktop(bus_.services());
  QApplication::setActiveWindow(&window_);
  window_.burnDidEnd(BurnEnd::Succeeded);
  putBehind();
  window_.burnDidEnd(BurnEnd::Failed);
  turnUntil([&desktop] { return !desktop.shown.empty(); });
  ASSERT_EQ(desktop.shown.size(), 1U);
  EXPECT_EQ(desktop.shown[0].category, "transfer.error") << "the success had been seen";
}

TEST_F(DesktopWindow, TitleTellsTheOpenDiscAndHowMuchOfItIsBurned) {
  EXPECT_EQ(window_.windowTitle(), "KelvaneFS");
  window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Direct);
  window_.setVolumeNameField("HOLIDAY");
  EXPECT_EQ(window_.windowTitle(), "HOLIDAY – KelvaneFS");
  window_.setFrame(ContentView::MountedItem, kLeftOfWindow, Movement::Direct);
  window_.setFrame(ContentView::Burn, kInWindow, Movement::Direct);
  window_.burnProgressIndicator().setIndeterminate(true);
  window_.burnProgressIndicator().startAnimation();
  EXPECT_EQ(window_.windowTitle(), "HOLIDAY – KelvaneFS") << "nobody knows how much yet";
  window_.burnProgressIndicator().setIndeterminate(false);
  window_.burnProgressIndicator().setDoubleValue(0.84);
  EXPECT_EQ(window_.windowTitle(), "42% – HOLIDAY – KelvaneFS");
  window_.setFrame(ContentView::MountedItem, kRightOfWindow, Movement::Direct);
  window_.setFrame(ContentView::Burn, kRightOfWindow, Movement::Animated);
  EXPECT_EQ(window_.windowTitle(), "KelvaneFS");
}

TEST_F(DesktopWindow, TaskBarShowsTheProgressOfABurnUntilItEnds) {
  const FakeLauncher launcher(bus_.services());
  window_.setFrame(ContentView::Burn, kInWindow, Movement::Direct);
  window_.burnProgressIndicator().setIndeterminate(false);
  window_.burnProgressIndicator().setDoubleValue(0.84);
  window_.setFrame(ContentView::Burn, kRightOfWindow, Movement::Direct);
  turnUntil(
      [&launcher] { return !launcher.shown.empty() && launcher.shown.back().ends_with(" none"); });
  EXPECT_THAT(launcher.shown, ::testing::Contains("application://kelvanefs.desktop 42%"));
}

TEST_F(DesktopWindow, PaletteThatChangesWhileItIsShownIsFollowed) {
  const QPalette before = QApplication::palette();
  QPalette dark(QColor(0x30, 0x30, 0x30));
  QApplication::setPalette(dark);
  QApplication::processEvents();
  const QImage inDark = window_.grab().toImage();
  EXPECT_LT(QColor(inDark.pixel(3, 3)).lightness(), 80) << "the header";
  EXPECT_LT(QColor(inDark.pixel(3, inDark.height() - 3)).lightness(), 80) << "the bar of buttons";
  QApplication::setPalette(before);
  QApplication::processEvents();
  const QImage inLight = window_.grab().toImage();
  EXPECT_GT(QColor(inLight.pixel(3, 3)).lightness(), 180);
  const int middle = inLight.height() / 2;
  EXPECT_EQ(inLight.pixel(3, middle), inDark.pixel(3, middle)) << "the display stays as it is";
}

TEST_F(DesktopWindow, AClickOnTheNotificationBringsTheWindowBack) {
  FakeNotifications desktop(bus_.services());
  window_.hideApplication();
  putBehind();
  window_.burnDidEnd(BurnEnd::Failed);
  turnUntil([&desktop] { return desktop.shown.size() == 1; });
  // The window hears of the notification's number before it hears of the click.
  desktop.click(1);
  turnUntil([this] { return !window_.isMinimized(); });
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// What the window shows of an open disc while it is used, on an emulated drive.
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <fstream>

#include "app/window_session_fixture.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "ui/view_parts.h"

namespace kelvane::test {
namespace {

class OpenedDiscInTheWindow : public WindowSessionWithDisc {
 protected:
  static std::string text(const char* field) {
    return shown("mainWindow")->findChild<QLabel*>(QLatin1String(field))->text().toStdString();
  }
  static std::string caption() {
    return shown("mainWindow")->findChild<QPushButton*>("openButton")->text().toStdString();
  }
  static std::string freeMegabytes() {
    const auto bytes = std::filesystem::space(paths::overlayMountPoint()).free;
    return format(localizedString("viewSizeOfDisk"), static_cast<int32_t>(bytes / 1048576));
  }
  static bool tellsTheRoomThatThereIs() { return text("sizeInformationField") == freeMegabytes(); }
};

TEST_F(OpenedDiscInTheWindow, TellsItsNameItsDriveAndTheRoomThatWritingLeaves) {
  std::string before;
  when(isOpen(), [&before] {
    EXPECT_EQ(text("volumeNameField"), "SAMPLE");
    EXPECT_EQ(text("deviceNameField"), "CDRW in KELVANE SOFTWARE BURNER");
    EXPECT_EQ(caption(), localizedString("buttonclose"));
    EXPECT_TRUE(tellsTheRoomThatThereIs());
    EXPECT_FALSE(discImage().isNull());
    EXPECT_EQ(firstDiscImage(), discImage());
    before = text("sizeInformationField");
    std::ofstream(paths::overlayMountPoint() + "/new") << std::string(3 << 20, 'x');
  });
  when([&before] { return text("sizeInformationField") != before && tellsTheRoomThatThereIs(); },
       [] { std::filesystem::remove(paths::overlayMountPoint() + "/new"); });
  when([&before] { return text("sizeInformationField") == before; },
       [] { click("mainWindow", "openButton"); });
  when([] { return isReady() && caption() == localizedString("buttonopen"); }, [] { quitByKey(); });
  runWithDisc();
}

TEST_F(OpenedDiscInTheWindow, StaysInTheDriveWhoseButtonIsPressedAndTheUserLearnsWhy) {
  const auto pressButtonInVain = [] {
    for (const DRDevice* device : DRDevice::devices()) {
      // As udev's rule has it told.
      DRNotificationCenter::currentRunLoopCenter().post(DRDeviceTrayKeptShutNotification, device);
    }
  };
  const auto told = [] {
    const auto* sheet = qobject_cast<QMessageBox*>(alert());
    return sheet != nullptr && sheet->text() == localizedText("TrayKeptShut");
  };
  when(isOpen(), [&] {
    pressButtonInVain();
    pressButtonInVain();
  });
  when(told, [] { QTest::keyClick(alert(), Qt::Key_Return); });
  when(isOpen(), pressButtonInVain);
  when(told, [] { QTest::keyClick(alert(), Qt::Key_Escape); });
  when(isOpen(), [] { click("mainWindow", "openButton"); });
  when([] { return isReady() && caption() == localizedString("buttonopen"); },
       [&] {
         pressButtonInVain();
         // Behind the notification, which goes the same way.
         performOnMainThread([] {
           EXPECT_EQ(alert(), nullptr) << "no disc is open";
           quitByKey();
         });
       });
  runWithDisc();
}

}  // namespace
}  // namespace kelvane::test

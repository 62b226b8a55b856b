// SPDX-License-Identifier: GPL-2.0-or-later
// What the window shows of an open disc while it is used, on an emulated drive.
#include <QLabel>
#include <QPushButton>
#include <fstream>

#include "app/window_session_fixture.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

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

}  // namespace
}  // namespace kelvane::test

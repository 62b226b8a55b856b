// SPDX-License-Identifier: GPL-2.0-or-later
// The offer to put the disc of an empty emulated drive back.
#include <QLabel>
#include <fstream>

#include "app/window_session_fixture.h"
#include "platform/foundation/strings_table.h"

namespace kelvane::test {
namespace {

class InsertOffer : public WindowSessionWithDisc {
 protected:
  static bool isMade() {
    return shown("mainWindow")->findChild<QPushButton*>("insertDiscButton")->isVisible();
  }
  static std::string message() {
    return shown("mainWindow")->findChild<QLabel*>("messageTextField")->text().toStdString();
  }
};

// The application closes the tray of each emulated drive when it starts.
TEST_F(InsertOffer, IsNotMadeWhileTheDriveTakesTheDiscIn) {
  discTool({"eject", disc_});
  std::ofstream(disc_ + "/faults") << "load: never ready\n";
  when([] { return isReady() && message() == localizedString("loadingdisk"); },
       [] {
         EXPECT_FALSE(isMade());
         EXPECT_EQ(firstDiscImage(), discImage()) << "also one that is still loading has it";
         quitByKey();
       });
  runWithDisc();
}

}  // namespace
}  // namespace kelvane::test

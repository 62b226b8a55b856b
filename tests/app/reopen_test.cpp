// SPDX-License-Identifier: GPL-2.0-or-later
// The user starts the application while it runs: what becomes of its window, on a bus of the test's
// own.
#include <QDBusConnectionInterface>

#include "app/window_session_fixture.h"
#include "desktop/private_bus.h"
#include "platform/desktop/running_instance.h"
#include "ui/opened_urls.h"

namespace kelvane::test {
namespace {

class Reopen : public WindowSessionWithDisc {
 protected:
  /// Whether the running application can be found by the one that is started.
  bool isFound() const {
    return bus_.services().interface()->isServiceRegistered(
        QStringLiteral("org.kelvanefs.kelvanefs"));
  }
  /// What an application does that is started beside it. Its window has been asked for then.
  void startAgain() {
    EXPECT_TRUE(desktop::showRunningInstance());
    isStartedAgain_ = true;
  }

  PrivateBus bus_;
  bool isStartedAgain_ = false;
  kelvane::testing::OpenedUrls fileManager_{QStringLiteral("file")};
};

TEST_F(Reopen, BringsAWindowBackThatIsHiddenBecauseADiscIsOpen) {
  UserDefaults::standard().setBool(true, "autohide");
  when([this] { return shown("mainWindow") && shown("mainWindow")->isMinimized() && isFound(); },
       [this] {
         startAgain();
         EXPECT_FALSE(shown("mainWindow")->isMinimized());
       });
  when([this] { return isStartedAgain_ && isOpen()(); }, [] { quitByKey(); });
  runWithDisc();
}

TEST_F(Reopen, LeavesTheWindowAwayUntilTheUserHasAgreed) {
  UserDefaults::standard().setString("0.0.1", "licenseShownForVersion");
  when([this] { return shown("licenseWindow") && isFound(); },
       [this] {
         startAgain();
         EXPECT_EQ(shown("mainWindow"), nullptr);
         EXPECT_NE(shown("licenseWindow"), nullptr);
         click("licenseWindow", "disagreeButton");
       });
  runWithDisc();
}

}  // namespace
}  // namespace kelvane::test

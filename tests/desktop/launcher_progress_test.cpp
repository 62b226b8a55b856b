// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/launcher_progress.h"

#include <memory>

#include "desktop/desktop_fixture.h"

namespace kelvane::desktop {
namespace {

using test::FakeLauncher;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LauncherProgressTest : public test::DesktopFixture {
 protected:
  std::unique_ptr<LauncherProgress> progress_ = std::make_unique<LauncherProgress>();
};

TEST_F(LauncherProgressTest, IsShownAtTheEntryOfTheApplication) {
  const FakeLauncher launcher(bus_.services());
  progress_->show(0.25);
  turnUntil([&launcher] { return !launcher.shown.empty(); });
  EXPECT_THAT(launcher.shown, ElementsAre("application://kelvanefs.desktop 25%"));
}

TEST_F(LauncherProgressTest, IsSentOnceForEachWholePercent) {
  const FakeLauncher launcher(bus_.services());
  for (const double fraction : {0.25, 0.251, 0.2599, 0.26, 1.7}) progress_->show(fraction);
  progress_->show(std::nullopt);
  turnUntil([&launcher] { return launcher.shown.size() == 4; });
  EXPECT_THAT(
      launcher.shown,
      ElementsAre("application://kelvanefs.desktop 25%", "application://kelvanefs.desktop 26%",
                  "application://kelvanefs.desktop 100%", "application://kelvanefs.desktop none"));
}

TEST_F(LauncherProgressTest, GoesAwayWithWhoeverShowedIt) {
  const FakeLauncher launcher(bus_.services());
  progress_->show(0.5);
  progress_.reset();
  turnUntil([&launcher] { return launcher.shown.size() == 2; });
  EXPECT_EQ(launcher.shown.back(), "application://kelvanefs.desktop none");
}

TEST_F(LauncherProgressTest, ThatWasNeverShownSaysNothing) {
  const FakeLauncher launcher(bus_.services());
  progress_.reset();
  turn();
  EXPECT_THAT(launcher.shown, IsEmpty());
}

TEST_F(LauncherProgressTest, IsDroppedWithoutABus) {
  bus_.stop();
  turnUntil([] { return !sessionBus().isConnected(); });
  progress_->show(0.5);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

}  // namespace
}  // namespace kelvane::desktop

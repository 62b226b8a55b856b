// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/motion_setting.h"

#include "desktop/desktop_fixture.h"

namespace kelvane::desktop {
namespace {

using test::FakeSettings;
using test::Manner;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kAppearance[] = "org.freedesktop.appearance/reduced-motion";
constexpr char kGnome[] = "org.gnome.desktop.interface/enable-animations";

class MotionSettingTest : public test::DesktopFixture {
 protected:
  std::function<void(bool)> noting() {
    return [this](bool lessMotion) { heard_.push_back(lessMotion); };
  }

  std::vector<bool> heard_;
};

TEST_F(MotionSettingTest, ReducedMotionIsHeardOfAtFirstAndWhenItChanges) {
  FakeSettings settings(bus_.services());
  settings.values[kAppearance] = 1U;
  const MotionSetting setting(noting());
  turnUntil([this] { return heard_.size() == 1; });
  settings.change(kAppearance, 0U);
  turnUntil([this] { return heard_.size() == 2; });
  EXPECT_THAT(heard_, ElementsAre(true, false));
}

TEST_F(MotionSettingTest, DisabledAnimationsAreReducedMotion) {
  FakeSettings settings(bus_.services());
  settings.values[kGnome] = false;
  const MotionSetting setting(noting());
  turnUntil([this] { return heard_.size() == 1; });
  settings.change(kGnome, true);
  turnUntil([this] { return heard_.size() == 2; });
  EXPECT_THAT(heard_, ElementsAre(true, false));
}

TEST_F(MotionSettingTest, TheNewerSettingCountsWhereBothAreKnown) {
  FakeSettings settings(bus_.services());
  settings.values[kAppearance] = 1U;
  settings.values[kGnome] = true;
  const MotionSetting setting(noting());
  turnUntil([this] { return !heard_.empty(); });
  turn();
  settings.change(kGnome, true);
  turn();
  EXPECT_TRUE(heard_.back());
}

TEST_F(MotionSettingTest, OtherSettingsAndThoseThatAreNotKnownTellNothing) {
  FakeSettings settings(bus_.services());
  const MotionSetting setting(noting());
  turnUntil([&settings] { return settings.calls.size() == 2; });
  settings.change("org.freedesktop.appearance/color-scheme", 1U);
  turn();
  EXPECT_THAT(heard_, IsEmpty());
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(MotionSettingTest, WithoutAPortalOrABusNothingHappens) {
  const MotionSetting one(noting());
  turn();
  bus_.stop();
  const MotionSetting other(noting(), test::kShortPatience);
  QCoreApplication::processEvents();
  EXPECT_THAT(heard_, IsEmpty());
  EXPECT_THAT(log_.lines(), IsEmpty());
}

}  // namespace
}  // namespace kelvane::desktop

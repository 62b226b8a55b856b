// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/notifications.h"

#include "desktop/desktop_fixture.h"

namespace kelvane::desktop {
namespace {

using test::FakeNotifications;
using test::kShortPatience;
using test::Manner;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class NotificationsTest : public test::DesktopFixture {
 protected:
  const Notice success_{Notice::Kind::Success, "Burned", "LETTERS <b>& more</b>"};
  const Notice failure_{Notice::Kind::Failure, "Failed", ""};
  int clicks_ = 0;
  Notifications notifications_{[this] { ++clicks_; }};
};

TEST_F(NotificationsTest, AreShownAsTextWithTheApplicationsIcon) {
  FakeNotifications desktop(bus_.services());
  notifications_.show(success_);
  turnUntil([&desktop] { return desktop.shown.size() == 1; });
  EXPECT_THAT(desktop.calls, ElementsAre("KelvaneFS kelvanefs"));
  EXPECT_EQ(desktop.shown[0].summary, "Burned");
  EXPECT_EQ(desktop.shown[0].body, "LETTERS &lt;b&gt;&amp; more&lt;/b&gt;");
  EXPECT_EQ(desktop.shown[0].category, "transfer.complete");
}

TEST_F(NotificationsTest, TellAFailureFromASuccess) {
  FakeNotifications desktop(bus_.services());
  notifications_.show(failure_);
  turnUntil([&desktop] { return desktop.shown.size() == 1; });
  EXPECT_EQ(desktop.shown[0].category, "transfer.error");
}

TEST_F(NotificationsTest, TakeThePlaceOfTheOneBefore) {
  FakeNotifications desktop(bus_.services());
  notifications_.show(success_);
  turnUntil([&desktop] { return desktop.shown.size() == 1; });
  turn();
  notifications_.show(failure_);
  turnUntil([&desktop] { return desktop.shown.size() == 2; });
  EXPECT_EQ(desktop.shown[0].replaces, 0U);
  EXPECT_EQ(desktop.shown[1].replaces, 1U);
}

TEST_F(NotificationsTest, OnlyAClickOnOnesOwnCounts) {
  FakeNotifications desktop(bus_.services());
  notifications_.show(success_);
  turnUntil([&desktop] { return desktop.shown.size() == 1; });
  turn();
  desktop.click(7);
  desktop.click(1, QStringLiteral("something else"));
  desktop.click(1);
  turnUntil([this] { return clicks_ > 0; });
  turn();
  EXPECT_EQ(clicks_, 1);
}

TEST_F(NotificationsTest, AreDroppedWhereNobodyShowsThem) {
  notifications_.show(success_);
  turn();
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(NotificationsTest, AreDroppedWithoutABus) {
  bus_.stop();
  notifications_.show(success_);
  turnUntil([] { return !sessionBus().isConnected(); });
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(NotificationsTest, ThatAreRefusedAreLogged) {
  FakeNotifications desktop(bus_.services());
  desktop.manner = Manner::Refuses;
  notifications_.show(success_);
  turnUntil([this] { return !log_.lines().empty(); });
  EXPECT_THAT(log_.lines(), ElementsAre("The desktop shows no notification: not today"));
}

TEST_F(NotificationsTest, ThatAreNeverAnsweredAreGivenUp) {
  FakeNotifications desktop(bus_.services());
  desktop.manner = Manner::Waits;
  notifications_.show(success_, kShortPatience);
  turnUntil([this] { return !log_.lines().empty(); });
  EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("The desktop shows no notification: ")));
}

}  // namespace
}  // namespace kelvane::desktop

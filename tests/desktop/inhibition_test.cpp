// SPDX-License-Identifier: GPL-2.0-or-later
#include "desktop/desktop_fixture.h"
#include "platform/desktop/logout_inhibition.h"
#include "platform/desktop/sleep_inhibition.h"
#include "platform/desktop/work_inhibition.h"
#include "platform/foundation/child_task.h"

namespace kelvane::desktop {
namespace {

using test::FakeLoginManager;
using test::FakePortal;
using test::kShortPatience;
using test::Manner;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Inhibiting : public test::DesktopFixture {};

TEST_F(Inhibiting, SleepIsHeldOffAsLongAsTheObjectLives) {
  FakeLoginManager manager(bus_.services());
  {
    const SleepInhibition inhibition("Writing to the disc");
    turnUntil([&inhibition] { return inhibition.isHeld(); });
    EXPECT_EQ(manager.held(), 1);
    EXPECT_THAT(manager.calls,
                ElementsAre("sleep:shutdown:idle | KelvaneFS | Writing to the disc | block"));
  }
  turnUntil([&manager] { return manager.held() == 0; });
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Inhibiting, SleepIsHeldOffUntilAProgramHasEndedThatOutlivesUs) {
  FakeLoginManager manager(bus_.services());
  ChildTask survivor;
  ChildTask companion;
  for (ChildTask* task : {&survivor, &companion}) {
    task->setLaunchPath("/bin/sleep");
    task->setArguments({"1000"});
  }
  survivor.setSession(ChildTask::Session::OfItsOwn);
  {
    const SleepInhibition inhibition("Writing to the disc");
    turnUntil([&inhibition] { return inhibition.isHeld(); });
    ASSERT_TRUE(survivor.launch());
    ASSERT_TRUE(companion.launch());
  }
  turn();
  EXPECT_EQ(manager.held(), 1) << "the machine may sleep while a disc is written";
  survivor.kill();
  turnUntil([&manager] { return manager.held() == 0; });
  EXPECT_TRUE(companion.isRunning());
  survivor.waitUntilExit();
}

TEST_F(Inhibiting, SleepThatIsGrantedTooLateIsLetGoAtOnce) {
  FakeLoginManager manager(bus_.services());
  manager.manner = Manner::Waits;
  {
    const SleepInhibition inhibition("Writing to the disc");
    turnUntil([&manager] { return !manager.calls.empty(); });
    EXPECT_FALSE(inhibition.isHeld());
  }
  manager.answerNow();
  turnUntil([&manager] { return manager.held() == 0; });
}

TEST_F(Inhibiting, TwoDiscsHoldSleepOffByThemselves) {
  FakeLoginManager manager(bus_.services());
  auto one = std::make_unique<SleepInhibition>("one");
  auto other = std::make_unique<SleepInhibition>("other");
  turnUntil([&] { return one->isHeld() && other->isHeld(); });
  one.reset();
  turnUntil([&manager] { return manager.held() == 1; });
  EXPECT_TRUE(other->isHeld());
}

TEST_F(Inhibiting, WithoutALoginManagerTheLogSaysSoOnce) {
  const SleepInhibition inhibition("Writing to the disc");
  turnUntil([this] { return !log_.lines().empty(); });
  turn();
  EXPECT_FALSE(inhibition.isHeld());
  EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("Sleep and shutdown are not held off: ")));
}

TEST_F(Inhibiting, WithoutABusTheLogSaysSoOnce) {
  bus_.stop();
  const SleepInhibition inhibition("Writing to the disc", kShortPatience);
  turnUntil([this] { return !log_.lines().empty(); });
  EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("Sleep and shutdown are not held off: ")));
}

TEST_F(Inhibiting, ALoginManagerThatRefusesIsQuoted) {
  FakeLoginManager manager(bus_.services());
  manager.manner = Manner::Refuses;
  const SleepInhibition inhibition("Writing to the disc");
  turnUntil([this] { return !log_.lines().empty(); });
  EXPECT_THAT(log_.lines(), ElementsAre("Sleep and shutdown are not held off: not today"));
}

TEST_F(Inhibiting, ALoginManagerThatNeverAnswersIsGivenUp) {
  FakeLoginManager manager(bus_.services());
  manager.manner = Manner::Waits;
  const SleepInhibition inhibition("Writing to the disc", kShortPatience);
  turnUntil([this] { return !log_.lines().empty(); });
  EXPECT_FALSE(inhibition.isHeld());
  EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("Sleep and shutdown are not held off: ")));
}

TEST_F(Inhibiting, LogoutIsHeldOffAsLongAsTheObjectLives) {
  FakePortal portal(bus_.services());
  {
    const LogoutInhibition inhibition("Writing to the disc");
    turnUntil([&inhibition] { return inhibition.isHeld(); });
    EXPECT_EQ(portal.held, 1);
  }
  turnUntil([&portal] { return portal.held == 0; });
  EXPECT_THAT(portal.calls, ElementsAre("1 | Writing to the disc", "Close /request/1"));
}

TEST_F(Inhibiting, LogoutThatIsGrantedTooLateIsLetGoAtOnce) {
  FakePortal portal(bus_.services());
  portal.manner = Manner::Waits;
  {
    const LogoutInhibition inhibition("Writing to the disc");
    turnUntil([&portal] { return !portal.calls.empty(); });
  }
  portal.answerNow();
  turnUntil([&portal] { return portal.held == 0; });
}

TEST_F(Inhibiting, LogoutThatIsGrantedAfterThePatienceEndsWithTheObject) {
  FakePortal portal(bus_.services());
  portal.manner = Manner::Waits;
  {
    int answers = 0;
    const LogoutInhibition inhibition(
        "Writing to the disc", [&answers] { ++answers; }, kShortPatience);
    turnUntil([&] { return answers == 1 && !portal.calls.empty(); });
    EXPECT_FALSE(inhibition.isHeld());
    portal.answerNow();
    turnUntil([&inhibition] { return inhibition.isHeld(); });
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(portal.held, 1);
  }
  turnUntil([&portal] { return portal.held == 0; });
  EXPECT_THAT(portal.calls, ElementsAre("1 | Writing to the disc", "Close /request/1"));
  EXPECT_THAT(log_.lines(), ElementsAre("Logging out is not held off: no answer in time"));
}

TEST_F(Inhibiting, LogoutThatIsGrantedAfterThePatienceAndTheObjectIsLetGoAtOnce) {
  FakePortal portal(bus_.services());
  portal.manner = Manner::Waits;
  {
    bool answered = false;
    const LogoutInhibition inhibition(
        "Writing to the disc", [&answered] { answered = true; }, kShortPatience);
    turnUntil([&] { return answered && !portal.calls.empty(); });
  }
  portal.answerNow();
  turnUntil([&portal] { return portal.held == 0; });
}

TEST_F(Inhibiting, WithoutAPortalNothingIsSaid) {
  const LogoutInhibition inhibition("Writing to the disc");
  turn();
  EXPECT_FALSE(inhibition.isHeld());
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Inhibiting, APortalThatRefusesIsQuoted) {
  FakePortal portal(bus_.services());
  portal.manner = Manner::Refuses;
  const LogoutInhibition inhibition("Writing to the disc");
  turnUntil([this] { return !log_.lines().empty(); });
  EXPECT_THAT(log_.lines(), ElementsAre("Logging out is not held off: not today"));
}

TEST_F(Inhibiting, WhoeverAskedForItHearsThatLogoutIsHeldOff) {
  FakePortal portal(bus_.services());
  int heldWhenAnswered = -1;
  const LogoutInhibition inhibition("A disc is open", [&] { heldWhenAnswered = portal.held; });
  EXPECT_EQ(heldWhenAnswered, -1);
  turnUntil([&heldWhenAnswered] { return heldWhenAnswered == 1; });
}

TEST_F(Inhibiting, WhoeverAskedForItHearsThatItIsRefused) {
  FakePortal portal(bus_.services());
  portal.manner = Manner::Refuses;
  bool answered = false;
  const LogoutInhibition inhibition("A disc is open", [&answered] { answered = true; });
  turnUntil([&answered] { return answered; });
  EXPECT_FALSE(inhibition.isHeld());
}

TEST_F(Inhibiting, WorkHoldsOffBoth) {
  FakeLoginManager manager(bus_.services());
  FakePortal portal(bus_.services());
  {
    const WorkInhibition inhibition("Erasing the disc");
    turnUntil([&] { return manager.held() == 1 && portal.held == 1; });
  }
  turnUntil([&] { return manager.held() == 0 && portal.held == 0; });
}

}  // namespace
}  // namespace kelvane::desktop

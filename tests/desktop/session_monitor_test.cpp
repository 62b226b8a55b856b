// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/session_monitor.h"

#include "desktop/desktop_fixture.h"

namespace kelvane::desktop {
namespace {

using test::FakePortal;
using test::kShortPatience;
using test::Manner;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class MonitoringTheSession : public test::DesktopFixture {
 protected:
  std::function<void(SessionMonitor::State)> noting() {
    return [this](SessionMonitor::State state) { heard_.push_back(static_cast<int>(state)); };
  }

  std::vector<int> heard_;
};

TEST_F(MonitoringTheSession, ItsEndIsHeardOfAndAcknowledged) {
  FakePortal portal(bus_.services());
  SessionMonitor monitor(noting());
  turnUntil([&portal] { return portal.sessions.size() == 1; });
  for (const uint state : {2U, 1U, 3U}) portal.tell(portal.sessions[0], state);
  turnUntil([this] { return heard_.size() == 3; });
  EXPECT_THAT(heard_, ElementsAre(2, 1, 3));
  monitor.acknowledge();
  turnUntil([&portal] { return portal.calls.back() == "QueryEndResponse"; });
}

TEST_F(MonitoringTheSession, WhatIsMeantForOthersAndWhatHasNoMeaningIsNotHeard) {
  FakePortal portal(bus_.services());
  const SessionMonitor monitor(noting());
  turnUntil([&portal] { return portal.sessions.size() == 1; });
  portal.tell(QStringLiteral("/org/freedesktop/portal/desktop/session/1_7/other"), 2);
  portal.tell(portal.sessions[0], 0);
  portal.tell(portal.sessions[0], 4);
  portal.tell(portal.sessions[0], 2);
  turnUntil([this] { return !heard_.empty(); });
  EXPECT_THAT(heard_, ElementsAre(2));
}

TEST_F(MonitoringTheSession, TwoMonitorsAreTwoSessions) {
  FakePortal portal(bus_.services());
  const SessionMonitor one(noting());
  const SessionMonitor other([](SessionMonitor::State) { ADD_FAILURE(); });
  turnUntil([&portal] { return portal.sessions.size() == 2; });
  portal.tell(portal.sessions[0], 3);
  turnUntil([this] { return !heard_.empty(); });
  turn();
}

TEST_F(MonitoringTheSession, NothingIsHeardOnceItIsDeleted) {
  FakePortal portal(bus_.services());
  {
    const SessionMonitor monitor(noting());
    turnUntil([&portal] { return portal.sessions.size() == 1; });
  }
  portal.tell(portal.sessions[0], 2);
  turn();
  EXPECT_THAT(heard_, IsEmpty());
}

TEST_F(MonitoringTheSession, WithoutAPortalOrItsMonitorsNothingIsSaid) {
  {
    const SessionMonitor monitor(noting());
    turn();
  }
  FakePortal portal(bus_.services());
  portal.hasMonitors = false;
  const SessionMonitor monitor(noting());
  turn();
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(MonitoringTheSession, APortalThatRefusesIsQuoted) {
  FakePortal portal(bus_.services());
  portal.manner = Manner::Refuses;
  const SessionMonitor monitor(noting());
  turnUntil([this] { return !log_.lines().empty(); });
  EXPECT_THAT(log_.lines(), ElementsAre("The end of the session will not be heard of: not today"));
}

TEST_F(MonitoringTheSession, WithoutABusNothingHappens) {
  bus_.stop();
  SessionMonitor monitor(noting(), kShortPatience);
  monitor.acknowledge();
  QCoreApplication::processEvents();
  EXPECT_THAT(heard_, IsEmpty());
}

}  // namespace
}  // namespace kelvane::desktop

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/disc_service.h"

#include <atomic>
#include <thread>

#include "desktop/desktop_fixture.h"
#include "desktop/fake_disc_service.h"

namespace kelvane::test {
namespace {

using desktop::DiscServiceAnswer;
using ::testing::AnyOf;
using ::testing::ElementsAre;

class DiscServiceTest : public DesktopFixture {
 protected:
  /// Asks from a thread that waits, as that of the mount does, while the service answers here.
  template <typename Question>
  DiscServiceAnswer answerTo(const Question& question) {
    std::atomic<bool> answered = false;
    DiscServiceAnswer answer = DiscServiceAnswer::Refused;
    std::thread asking([&] {
      answer = question();
      answered = true;
    });
    turnUntil([&answered] { return answered.load(); });
    asking.join();
    return answer;
  }

  DiscServiceAnswer mount() {
    return answerTo([] { return desktop::mountThroughDiscService("sr0"); });
  }
};

TEST_F(DiscServiceTest, MountsADiscWithoutAskingForAPassword) {
  FakeDiscService service(bus_.services(), "sr0");
  EXPECT_EQ(mount(), DiscServiceAnswer::Done);
  EXPECT_THAT(service.calls, ElementsAre("Mount quietly"));
}

TEST_F(DiscServiceTest, ItsErrorsAreToldApart) {
  FakeDiscService service(bus_.services(), "sr0");
  const std::pair<const char*, DiscServiceAnswer> cases[] = {
      {"org.freedesktop.UDisks2.Error.AlreadyMounted", DiscServiceAnswer::AlreadyMounted},
      {"org.freedesktop.UDisks2.Error.DeviceBusy", DiscServiceAnswer::Refused},
      {"org.freedesktop.UDisks2.Error.NotAuthorized", DiscServiceAnswer::Refused},
      {"org.freedesktop.UDisks2.Error.Failed", DiscServiceAnswer::Refused},
      {"org.freedesktop.DBus.Error.AccessDenied", DiscServiceAnswer::Refused}};
  for (const auto& [error, answer] : cases) {
    service.error = QString::fromLatin1(error);
    EXPECT_EQ(mount(), answer) << error;
  }
}

TEST_F(DiscServiceTest, ADriveThatItDoesNotKnowIsAsIfThereWereNoService) {
  FakeDiscService service(bus_.services(), "sr1");
  EXPECT_EQ(mount(), DiscServiceAnswer::Absent);
}

TEST_F(DiscServiceTest, WithoutTheServiceOrTheBusItIsAbsentAtOnce) {
  EXPECT_EQ(desktop::mountThroughDiscService("sr0"), DiscServiceAnswer::Absent);
  bus_.stop();
  turnUntil([] { return !desktop::systemBus().isConnected(); });  // That it has gone is known then.
  EXPECT_EQ(desktop::mountThroughDiscService("sr0"), DiscServiceAnswer::Absent);
}

TEST_F(DiscServiceTest, OneThatDoesNotAnswerInTimeIsGivenUp) {
  FakeDiscService service(bus_.services(), "sr0");
  service.manner = Manner::Waits;
  EXPECT_EQ(answerTo([] { return desktop::mountThroughDiscService("sr0", kShortPatience); }),
            DiscServiceAnswer::Unanswered);
}

TEST_F(DiscServiceTest, OneWhoseBusGoesAwayMeanwhileIsGivenUp) {
  FakeDiscService service(bus_.services(), "sr0");
  service.manner = Manner::Waits;
  std::atomic<bool> answered = false;
  DiscServiceAnswer answer = DiscServiceAnswer::Done;
  std::thread asking([&] {
    answer = desktop::mountThroughDiscService("sr0", std::chrono::seconds(2));
    answered = true;
  });
  EXPECT_TRUE(turnUntil([&service] { return !service.calls.empty(); }));
  bus_.stop();
  EXPECT_TRUE(turnUntil([&answered] { return answered.load(); }));
  asking.join();
  EXPECT_THAT(answer, AnyOf(DiscServiceAnswer::Unanswered, DiscServiceAnswer::Absent));
}

}  // namespace
}  // namespace kelvane::test

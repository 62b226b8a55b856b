// SPDX-License-Identifier: GPL-2.0-or-later
// The update check at launch: when a request is made, and what follows from its answer.
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include "app/controller_fixture.h"
#include "foundation/temporary_user_defaults.h"
#include "platform/foundation/user_defaults.h"
#include "services/version_server.h"

namespace kelvane::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr const char* kProductPage = "https://kelvanefs.example/download";
const std::string kDialog = "modal alert updatecheck updatechecklong";

// Whoever waited for the answer of a silent server would still do so when the test is given up.
constexpr std::chrono::minutes kLongerThanATestMayTake{10};

class UpdateCheck : public ControllerFixture {
 protected:
  /// Launches the application, with the server's address as that of the version endpoint.
  void launch() {
    launched_.emplace(controller_, window_,
                      UpdateSource{.versionEndpoint = server_.endpoint(),
                                   .productPage = kProductPage,
                                   .patience = kLongerThanATestMayTake});
    launched_->applicationDidFinishLaunching();
  }
  /// Ends the application; waits for the check's thread as far as it may go on.
  void quit() { launched_.reset(); }

  TemporaryUserDefaults defaults_;
  VersionServer server_;
  std::optional<KVAppDelegate> launched_;
};

TEST_F(UpdateCheck, ANewerBuildNumberShowsTheDialogOnce) {
  for (const char* body : {"1601", "2000", "1601\n"}) {
    server_.answerBody(body);
    launch();
    turnUntil([this] { return window_.has(kDialog); });
    EXPECT_EQ(std::count(window_.calls.begin(), window_.calls.end(), kDialog), 1) << body;
    quit();
    newCalls();
  }
}

TEST_F(UpdateCheck, AnythingElseShowsAndLogsNothing) {
  for (const char* body : {"1600", "abc", "", "0", "-1601", "1601 \xC3\xA9"}) {
    server_.answerBody(body);
    launch();
    turnUntil([this] { return launched_->updateCheckHasEnded(); });
    quit();
    EXPECT_THAT(newCalls(), Not(Contains(kDialog))) << body;
  }
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(UpdateCheck, TheDialogHasTwoButtonsAndIsInformational) {
  server_.answerBody("1601");
  launch();
  turnUntil([this] { return !window_.alerts.empty(); });
  EXPECT_EQ(window_.alerts[0].style, Alert::Style::Informational);
  EXPECT_THAT(window_.alerts[0].buttonKeys, ElementsAre("updatecheckdownload", "cancelbutton"));
}

TEST_F(UpdateCheck, OnlyTheSecondButtonKeepsTheProductPageClosed) {
  const std::string browse = std::string("browse ") + kProductPage;
  window_.modalAlertAnswer = kAlertFirstButtonReturn + 1;
  delegate_.displayUpdateCheckDialog();
  EXPECT_THAT(newCalls(), ElementsAre(kDialog));
  KVAppDelegate delegate(controller_, window_,
                         UpdateSource{.versionEndpoint = {}, .productPage = kProductPage});
  for (const int answer : {kAlertFirstButtonReturn, kAlertFirstButtonReturn + 2, 0, -1}) {
    window_.modalAlertAnswer = answer;
    delegate.displayUpdateCheckDialog();
    EXPECT_THAT(newCalls(), ElementsAre(kDialog, browse)) << answer;
  }
}

TEST_F(UpdateCheck, TheCheckWaitsForTheDialogWhichIsOnTheMainThread) {
  server_.answerBody("1601");
  bool wasOnMainThread = false;
  bool hadEnded = true;
  window_.onCall = [&](const std::string& call) {
    if (call != kDialog) return;
    wasOnMainThread = isMainThread();
    hadEnded = launched_->updateCheckHasEnded();
  };
  launch();
  turnUntil([this] { return window_.has(kDialog); });
  EXPECT_TRUE(wasOnMainThread);
  EXPECT_FALSE(hadEnded);
  turnUntil([this] { return launched_->updateCheckHasEnded(); });
}

TEST_F(UpdateCheck, StartUpDoesNotWaitForTheAnswer) {
  server_.keepWaiting("/version");
  launch();
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront"));
  turnUntil([this] { return !server_.requests().empty(); });
}

TEST_F(UpdateCheck, QuittingDoesNotWaitForTheAnswer) {
  server_.keepWaiting("/version");
  launch();
  turnUntil([this] { return !server_.requests().empty(); });
  quit();
  turnUntil([this] { return server_.openConnections() == 0; });
}

TEST_F(UpdateCheck, WhereTheUserHasDisabledItNoRequestIsMade) {
  server_.answerBody("2000");
  UserDefaults::standard().setBool(true, "disableUpdateCheck");
  launch();
  EXPECT_TRUE(launched_->updateCheckHasEnded());
  turn();
  EXPECT_THAT(server_.requests(), IsEmpty());
}

TEST_F(UpdateCheck, AnyOtherValueOfTheSettingLeavesItOn) {
  server_.answerBody("1600");
  UserDefaults::standard().setString("perhaps", "disableUpdateCheck");
  launch();
  turnUntil([this] { return launched_->updateCheckHasEnded(); });
  EXPECT_THAT(server_.requests(), SizeIs(1));
}

TEST_F(UpdateCheck, IsMadeOncePerLaunch) {
  server_.answerBody("1600");
  for (size_t launches = 1; launches <= 2; ++launches) {
    launch();
    turnUntil([this] { return launched_->updateCheckHasEnded(); });
    EXPECT_THAT(server_.requests(), SizeIs(launches));
    quit();
  }
}

TEST_F(UpdateCheck, WithoutAnEndpointNoRequestIsMade) {
  delegate_.applicationDidFinishLaunching();
  EXPECT_TRUE(delegate_.updateCheckHasEnded());
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront"));
}

}  // namespace
}  // namespace kelvane::test

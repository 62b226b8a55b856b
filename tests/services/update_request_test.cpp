// SPDX-License-Identifier: GPL-2.0-or-later
// The one request of the application, to a server that answers well, badly and not at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QHostAddress>
#include <QTcpServer>
#include <atomic>
#include <optional>
#include <thread>

#include "foundation/application_fixture.h"
#include "foundation/turn_until.h"
#include "services/update_check.h"
#include "services/update_source.h"
#include "services/version_server.h"

namespace kelvane {
namespace {

using namespace std::chrono_literals;
using test::turnUntil;
using test::VersionServer;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// What does not come at all is waited for this long.
constexpr auto kShortTimeout = 300ms;
// Never waited for in full.
constexpr auto kLongTimeout = 60s;

class UpdateRequest : public ApplicationFixture {
 protected:
  /// Fetches on a thread of its own, while the server works on this one.
  std::string fetch(const std::string& endpoint, std::chrono::milliseconds timeout = kLongTimeout) {
    std::string reply;
    std::atomic<bool> done = false;
    const std::jthread asking([&](const std::stop_token& stop) {
      reply = fetchUpdateReply(endpoint, timeout, stop);
      done = true;
    });
    turnUntil([&done] { return done.load(); });
    return reply;
  }
  std::string fetch() { return fetch(server_.endpoint()); }

  VersionServer server_;
};

TEST_F(UpdateRequest, GivesTheBodyOfTheAnswer) {
  for (const char* body : {"1600", "1601", "2000", "abc", ""}) {
    server_.answerBody(body);
    EXPECT_EQ(fetch(), body);
  }
}

TEST_F(UpdateRequest, IsOnePlainGetThatAsksForNothingFromACacheAndTellsNothingOfTheUser) {
  server_.answerBody("1600");
  fetch();
  ASSERT_THAT(server_.requests(), SizeIs(1));
  const std::string request = server_.requests().front();
  EXPECT_THAT(request, StartsWith("get /version http/1.1\r\n"));
  EXPECT_THAT(request, HasSubstr("cache-control: no-cache"));
  EXPECT_THAT(request, HasSubstr("user-agent: kelvanefs\r\n"));
  EXPECT_THAT(request, Not(HasSubstr("cookie")));
}

TEST_F(UpdateRequest, TakesAnAnswerWhoseLengthIsToldByItsEnd) {
  server_.answer("/version", "HTTP/1.0 200 OK\r\n\r\n1601");
  EXPECT_EQ(fetch(), "1601");
}

TEST_F(UpdateRequest, TakesAnAnswerInChunks) {
  server_.answer(
      "/version",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n16\r\n2\r\n01\r\n0\r\n\r\n");
  EXPECT_EQ(fetch(), "1601");
}

TEST_F(UpdateRequest, AnErrorPageIsAnAnswerLikeAnyOther) {
  for (const char* status : {"404 Not Found", "403 Forbidden", "500 Internal Server Error"}) {
    server_.answer("/version", VersionServer::withStatus(status, "no such page"));
    EXPECT_EQ(fetch(), "no such page") << status;
  }
}

TEST_F(UpdateRequest, AQuestionForAPasswordIsNotAnswered) {
  server_.answer("/version",
                 VersionServer::withStatus("401 Unauthorized", "who are you",
                                           "WWW-Authenticate: Basic realm=\"versions\"\r\n"));
  EXPECT_EQ(fetch(), "who are you");
  EXPECT_THAT(server_.requests(), SizeIs(1));
}

TEST_F(UpdateRequest, GivesNothingWhereOnlyAPartOfTheAnswerCame) {
  server_.answer("/version", "HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n1601");
  EXPECT_THAT(fetch(), IsEmpty());
}

TEST_F(UpdateRequest, GivesNothingForWhatIsNoHttp) {
  for (const char* answer : {"", "1601", "1601\r\n\r\n", "HTTP/1.1\r\n\r\n1601"}) {
    server_.answer("/version", answer);
    EXPECT_THAT(fetch(), IsEmpty()) << answer;
  }
}

TEST_F(UpdateRequest, GivesNothingWhereNobodyListens) {
  std::string endpoint;
  {
    QTcpServer gone;
    ASSERT_TRUE(gone.listen(QHostAddress::LocalHost));
    endpoint = "http://127.0.0.1:" + std::to_string(gone.serverPort()) + "/version";
  }
  EXPECT_THAT(fetch(endpoint), IsEmpty());
}

TEST_F(UpdateRequest, GivesUpAtItsTimeOutWhereTheServerIsSilent) {
  // Until the request, too, has arrived by then: that takes its time on a busy machine.
  for (auto timeout = kShortTimeout; timeout < kLongTimeout; timeout *= 2) {
    VersionServer silent;
    silent.keepWaiting("/version");
    EXPECT_THAT(fetch(silent.endpoint(), timeout), IsEmpty());
    if (silent.requests().empty()) continue;
    EXPECT_THAT(silent.requests(), SizeIs(1));
    return;
  }
  FAIL() << "nothing was ever asked for";
}

TEST_F(UpdateRequest, TheTimeOutCountsForTheWholeAnswerHoweverSteadilyItComes) {
  server_.drip("/version", "HTTP/1.1 200 OK\r\nContent-Length: 60000\r\n\r\n", "1");
  EXPECT_THAT(fetch(server_.endpoint(), kShortTimeout), IsEmpty());
}

TEST_F(UpdateRequest, TheTimeOutOfTheApplicationIsTenSeconds) {
  EXPECT_EQ(kUpdateCheckTimeout, 10s);
  EXPECT_EQ(UpdateSource::ofThisBuild().patience, kUpdateCheckTimeout);
}

TEST_F(UpdateRequest, TakesTheLongestAnswerAndNothingLonger) {
  const QByteArray longest(kLongestUpdateReply, '1');
  server_.answerBody(longest);
  EXPECT_EQ(fetch(), longest.toStdString());
  server_.answerBody(longest + '1');
  EXPECT_THAT(fetch(), IsEmpty());
}

TEST_F(UpdateRequest, AnAnswerWithoutEndIsBrokenOff) {
  server_.answerWithoutEnd("/version", "HTTP/1.1 200 OK\r\n\r\n1601", QByteArray(4096, ' '));
  EXPECT_THAT(fetch(), IsEmpty());
  turnUntil([this] { return server_.openConnections() == 0; });
}

TEST_F(UpdateRequest, FollowsARedirect) {
  server_.answer("/version",
                 VersionServer::withStatus("302 Found", "1600", "Location: /there\r\n"));
  server_.answer("/there", VersionServer::withStatus("200 OK", "1601"));
  EXPECT_EQ(fetch(), "1601");
}

TEST_F(UpdateRequest, ACircleOfRedirectsEnds) {
  server_.answer("/version",
                 VersionServer::withStatus("301 Moved", "1601", "Location: /version\r\n"));
  EXPECT_THAT(fetch(), IsEmpty());
  // Qt repeats what a connection that is being closed has not answered.
  EXPECT_LE(server_.requests().size(), 30u);
}

TEST_F(UpdateRequest, IsNotRedirectedToAFile) {
  server_.answer("/version", VersionServer::withStatus("302 Found", "1601",
                                                       "Location: file:///etc/hostname\r\n"));
  EXPECT_THAT(fetch(), IsEmpty());
}

TEST_F(UpdateRequest, OnlyWebAddressesAreAsked) {
  for (const char* endpoint :
       {"", "file:///etc/hostname", "qrc:/kelvanefs/license_en.html", "data:,1601",
        "ftp://127.0.0.1/version", "/version", "http://", "http://[", "1601"}) {
    EXPECT_THAT(fetch(endpoint), IsEmpty()) << endpoint;
  }
}

TEST_F(UpdateRequest, IsGivenUpWhenItIsToldToStop) {
  server_.keepWaiting("/version");
  std::optional<std::string> reply;
  {
    std::jthread asking([&](const std::stop_token& stop) {
      reply = fetchUpdateReply(server_.endpoint(), kLongTimeout, stop);
    });
    turnUntil([this] { return !server_.requests().empty(); });
  }  // Tells it to stop, and waits for it.
  EXPECT_EQ(reply, "");
}

TEST_F(UpdateRequest, IsGivenUpWhereItHadToStopBeforeItBegan) {
  server_.keepWaiting("/version");
  std::stop_source source;
  source.request_stop();
  std::optional<std::string> reply;
  std::jthread([&] {
    reply = fetchUpdateReply(server_.endpoint(), kLongTimeout, source.get_token());
  }).join();
  EXPECT_EQ(reply, "");
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/running_instance.h"

#include "desktop/desktop_fixture.h"

namespace kelvane::desktop {
namespace {

using test::kShortPatience;

class RunningInstanceTest : public test::DesktopFixture {
 protected:
  /// What a second process does, over a connection of its own.
  void activate() {
    QDBusMessage method = QDBusMessage::createMethodCall(
        QStringLiteral("org.kelvanefs.kelvanefs"), QStringLiteral("/org/kelvanefs/kelvanefs"),
        QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    method << QVariantMap();
    answered_ = false;
    call(bus_.services(), method, kPatience, &context_, [this](const QDBusMessage& answer) {
      answered_ = true;
      isError_ = answer.type() == QDBusMessage::ErrorMessage;
    });
    turnUntil([this] { return answered_; });
  }

  QObject context_;
  int activations_ = 0;
  bool answered_ = false;
  bool isError_ = false;
};

TEST_F(RunningInstanceTest, IsShownWhenTheUserAsksForTheApplicationAgain) {
  const RunningInstance instance([this] { ++activations_; });
  turn();
  activate();
  EXPECT_FALSE(isError_);
  EXPECT_EQ(activations_, 1);
}

TEST_F(RunningInstanceTest, AnswersAProcessThatCannotRunBesideIt) {
  const RunningInstance instance([this] { ++activations_; });
  turn();
  EXPECT_TRUE(showRunningInstance());
  EXPECT_EQ(activations_, 1);
}

TEST_F(RunningInstanceTest, IsNoLongerFoundOnceItHasGone) {
  {
    const RunningInstance instance([this] { ++activations_; });
  }
  turn();
  EXPECT_FALSE(showRunningInstance());
  activate();
  EXPECT_TRUE(isError_);
  EXPECT_EQ(activations_, 0);
}

TEST_F(RunningInstanceTest, IsNotFoundWithoutABus) {
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  const RunningInstance instance([this] { ++activations_; });
  EXPECT_FALSE(showRunningInstance());
}

/// An instance that has hung: it has the name, and takes calls without ever answering.
class HungInstance : public test::FakeService {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit HungInstance(const QDBusConnection& bus)
      : FakeService(bus, QStringLiteral("org.kelvanefs.kelvanefs"),
                    QStringLiteral("/org/kelvanefs/kelvanefs")) {
    manner = test::Manner::Waits;
  }

 public Q_SLOTS:
  void Activate(const QVariantMap&) { takes(QStringLiteral("Activate")); }
};

TEST_F(RunningInstanceTest, ThatDoesNotAnswerIsGivenUp) {
  HungInstance hung(bus_.services());
  EXPECT_FALSE(showRunningInstance(kShortPatience));
  // The call may take longer to arrive than it is waited for.
  turnUntil([&hung] { return !hung.calls.empty(); });
  EXPECT_EQ(hung.calls.size(), 1U);
}

}  // namespace
}  // namespace kelvane::desktop

#include "running_instance_test.moc"

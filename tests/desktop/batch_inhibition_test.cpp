// SPDX-License-Identifier: GPL-2.0-or-later
// The built program, burning on an emulated disc, among the services of the desktop.
#include <QProcess>
#include <csignal>
#include <filesystem>

#include "desktop/desktop_fixture.h"
#include "volumes/temporary_prefix.h"

namespace kelvane {
namespace {

using test::FakeLoginManager;
using test::FakePortal;
using test::Manner;
using ::testing::Contains;
using ::testing::HasSubstr;

class BatchOnTheDesktop : public test::DesktopFixture {
 protected:
  BatchOnTheDesktop() {
    const QString disc = QString::fromStdString(prefix_.path() + "/disc.kvdisc");
    EXPECT_EQ(QProcess::execute(QStringLiteral(KELVANE_BIN_DIR "/kelvanedisc"),
                                {QStringLiteral("create"), disc, QStringLiteral("--media"),
                                 QStringLiteral("cd-r")}),
              0);
    QObject::connect(&batch_, &QProcess::readyReadStandardError,
                     [this] { said_ += batch_.readAllStandardError().toStdString(); });
    batch_.setProgram(QStringLiteral(KELVANE_BIN_DIR "/kelvanefs"));
    batch_.setArguments({QStringLiteral("batch"), QStringLiteral("--drive"), disc,
                         QStringLiteral("--"), QStringLiteral("touch"), QStringLiteral("new")});
  }
  ~BatchOnTheDesktop() override {
    batch_.kill();
    batch_.waitForFinished(-1);
  }

  bool hasEnded() const { return batch_.state() == QProcess::NotRunning; }
  void burnToTheEnd() {
    batch_.start();
    turnUntil([this] { return hasEnded(); });
  }

  test::TemporaryPrefix prefix_;
  QProcess batch_;
  std::string said_;
};

TEST_F(BatchOnTheDesktop, HoldsOffSleepAndLogoutWhileItBurns) {
  FakeLoginManager manager(bus_.services());
  FakePortal portal(bus_.services());
  batch_.start();
  turnUntil([&] { return (manager.held() == 1 && portal.held == 1) || hasEnded(); });
  EXPECT_FALSE(hasEnded()) << said_;
  turnUntil([this] { return hasEnded(); });
  EXPECT_EQ(batch_.exitCode(), 0) << said_;
  turnUntil([&manager] { return manager.held() == 0; });
  EXPECT_EQ(manager.calls.size(), 1U);
}

TEST_F(BatchOnTheDesktop, HoldsOffNothingOnceItHasBeenKilled) {
  FakeLoginManager manager(bus_.services());
  batch_.start();
  turnUntil([&] { return manager.held() == 1 || hasEnded(); });
  EXPECT_FALSE(hasEnded()) << said_;
  batch_.kill();
  turnUntil([&manager] { return manager.held() == 0; });
}

TEST_F(BatchOnTheDesktop, BurnsWithoutALoginManagerAndSaysSo) {
  burnToTheEnd();
  EXPECT_EQ(batch_.exitCode(), 0) << said_;
  EXPECT_THAT(said_, HasSubstr("Sleep and shutdown are not held off: "));
}

TEST_F(BatchOnTheDesktop, BurnsWithALoginManagerThatNeverAnswers) {
  FakeLoginManager manager(bus_.services());
  manager.manner = Manner::Waits;
  burnToTheEnd();
  EXPECT_EQ(batch_.exitCode(), 0) << said_;
  EXPECT_EQ(manager.calls.size(), 1U);
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// The built program with its window, started twice in one session.
#include <QDBusConnectionInterface>
#include <QProcess>

#include "desktop/desktop_fixture.h"
#include "foundation/temporary_user_defaults.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/user_defaults.h"
#include "volumes/temporary_prefix.h"

namespace kelvane {
namespace {

class SecondStart : public test::DesktopFixture {
 protected:
  SecondStart() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    for (QProcess* process : {&first_, &second_}) {
      process->setProgram(QStringLiteral(KELVANE_BIN_DIR "/kelvanefs"));
      process->setProcessChannelMode(QProcess::MergedChannels);
    }
  }
  ~SecondStart() override {
    for (QProcess* process : {&first_, &second_}) {
      process->kill();
      process->waitForFinished(-1);
    }
  }

  bool isRunning() const {
    return bus_.services().interface()->isServiceRegistered(
        QStringLiteral("org.kelvanefs.kelvanefs"));
  }
  static bool hasEnded(const QProcess& process) { return process.state() == QProcess::NotRunning; }

  /// The user has agreed to the licence of this version.
  static void agreeToLicense() {
    UserDefaults::standard().setString(Bundle::mainBundle().shortVersionString(),
                                       "licenseShownForVersion");
  }

  test::TemporaryUserDefaults defaults_;
  test::ScopedVariable configuration_{"XDG_CONFIG_HOME", defaults_.folder()};
  test::TemporaryPrefix prefix_;
  QProcess first_;
  QProcess second_;
};

TEST_F(SecondStart, EndsAtOnceBecauseTheFirstShowsItsWindow) {
  agreeToLicense();
  first_.start();
  turnUntil([this] { return isRunning() || hasEnded(first_); });
  ASSERT_FALSE(hasEnded(first_)) << first_.readAll().toStdString();
  second_.start();
  turnUntil([this] { return hasEnded(second_); });
  EXPECT_EQ(second_.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(second_.exitCode(), 0) << second_.readAll().toStdString();
  first_.terminate();
  turnUntil([this] { return hasEnded(first_); });
  EXPECT_EQ(first_.exitCode(), 0) << first_.readAll().toStdString();
  EXPECT_FALSE(isRunning());
}

TEST_F(SecondStart, EndsAtOnceAlsoWhileTheFirstAsksForTheAgreementWhichASignalEndsUnanswered) {
  first_.start();
  turnUntil([this] { return isRunning() || hasEnded(first_); });
  ASSERT_FALSE(hasEnded(first_)) << first_.readAll().toStdString();
  second_.start();
  turnUntil([this] { return hasEnded(second_); });
  EXPECT_EQ(second_.exitCode(), 0) << second_.readAll().toStdString();
  first_.terminate();
  turnUntil([this] { return hasEnded(first_); });
  EXPECT_EQ(first_.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(first_.exitCode(), 0) << first_.readAll().toStdString();
  EXPECT_FALSE(UserDefaults::standard().stringForKey("licenseShownForVersion").has_value());
}

TEST_F(SecondStart, ADiscThatIsThereAtTheStartIsOpened) {
  agreeToLicense();
  const QString disc = QString::fromStdString(prefix_.path() + "/disc.kvdisc");
  ASSERT_EQ(QProcess::execute(QStringLiteral(KELVANE_BIN_DIR "/kelvanedisc"),
                              {QStringLiteral("create"), disc, QStringLiteral("--media"),
                               QStringLiteral("cd-r")}),
            0);
  first_.setArguments({QStringLiteral("--drive"), disc});
  first_.start();
  QByteArray said;
  turnUntil([&] {
    said += first_.readAll();
    return said.contains("did mount") || hasEnded(first_);
  });
  EXPECT_FALSE(hasEnded(first_)) << said.toStdString();
  first_.terminate();
  turnUntil([this] { return hasEnded(first_); });
  EXPECT_EQ(first_.exitCode(), 0) << first_.readAll().toStdString();
}

}  // namespace
}  // namespace kelvane

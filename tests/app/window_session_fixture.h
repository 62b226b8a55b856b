// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <QListView>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <chrono>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "app/window_session.h"
#include "foundation/temporary_user_defaults.h"
#include "media/recorded_log.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/user_defaults.h"
#include "platform/volumes/mount_table.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::test {

/// The application as it runs with its window, and a user who takes one step after the other by
/// clicks and keys. What the user waits for is looked at time and again; the application runs
/// until it quits by itself.
class WindowSessionTest : public ::testing::Test {
 protected:
  // The drives of this test are not those of the next.
  void TearDown() override { DriveRegistry::shared().reset(); }

  /// What the user does, once the condition holds and the steps before it are done.
  void when(std::function<bool()> condition, std::function<void()> doThis) {
    steps_.emplace_back(std::move(condition), std::move(doThis));
  }

  /// Starts the application with these discs in emulated drives, and lets it run until it quits.
  void run(const std::vector<std::string>& discs = {}) {
    std::string error;
    auto core = ApplicationCore::create(discs, DriveRegistry::RealDrives::Excluded, &error);
    ASSERT_NE(core, nullptr) << error;
    ControllerServices services = systemControllerServices(core->visibleMounts());
    adapt(services);
    WindowSession session(std::move(core), std::move(services), updates());
    performOnMainThread([&session] { session.start(); });
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [this] { goOn(); });
    user.start(5);
    constexpr std::chrono::seconds kFarTooLong{100};
    QTimer::singleShot(kFarTooLong, &user, [] {
      ADD_FAILURE() << "waited in vain for the next step";
      QCoreApplication::quit();
    });
    QApplication::exec();
    EXPECT_THAT(steps_, ::testing::IsEmpty()) << "the application has quit before";
  }

  /// What a test puts in the place of the platform's services.
  virtual void adapt(ControllerServices& services) { (void)services; }
  virtual UpdateSource updates() const { return {}; }

  static void agreeBeforehand() {
    UserDefaults::standard().setString(Bundle::mainBundle().shortVersionString(),
                                       "licenseShownForVersion");
  }

  /// The window that is shown under this name, or null.
  static QWidget* shown(const char* name) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->objectName() == QLatin1String(name) && window->isVisible()) return window;
    }
    return nullptr;
  }
  static std::function<bool()> isShown(const char* name) {
    return [name] { return shown(name) != nullptr; };
  }
  static QWidget* alert() { return shown("alertSheet"); }
  static void click(const char* window, const char* button) {
    auto* found = shown(window)->findChild<QPushButton*>(QLatin1String(button));
    ASSERT_NE(found, nullptr);
    QTest::mouseClick(found, Qt::LeftButton);
  }
  /// Whether the main window is there to be used, with the keyboard. No window manager gives that
  /// back to it where a sheet has gone: the user takes the window.
  static bool isReady() {
    QWidget* window = shown("mainWindow");
    if (window == nullptr || QApplication::activeModalWidget() != nullptr) return false;
    if (QApplication::activeWindow() == window) return true;
    window->activateWindow();
    return false;
  }
  static void press(QKeyCombination keys) {
    QTest::keySequence(shown("mainWindow"), QKeySequence(keys));
  }
  /// The image beside the first disc of the list.
  static QImage firstDiscImage() {
    const auto* list = shown("mainWindow")->findChild<QListView*>("diskTableView");
    const QVariant icon = list->model()->index(0, 0).data(Qt::DecorationRole);
    return imageOf(icon.value<QIcon>());
  }
  /// The image that belongs there.
  static QImage discImage() {
    const auto path = Bundle::mainBundle().pathForResource("diskicon", "png");
    EXPECT_TRUE(path.has_value());
    return imageOf(QIcon(QString::fromStdString(path.value_or(""))));
  }

  static void quitByKey() { press(Qt::CTRL | Qt::Key_Q); }

  TemporaryPrefix prefix_;
  TemporaryUserDefaults defaults_;
  RecordedLog log_;

 private:
  static QImage imageOf(const QIcon& icon) {
    constexpr int kSide = 48;
    return icon.pixmap(kSide).toImage();
  }

  // One step at a time: a step may open a window that waits for the next.
  void goOn() {
    if (steps_.empty() || !steps_.front().first()) return;
    const auto step = std::move(steps_.front().second);
    steps_.pop_front();
    step();
  }

  std::deque<std::pair<std::function<bool()>, std::function<void()>>> steps_;
};

/// The same with a CD-RW in an emulated drive, which opens by itself: it is the only disc.
class WindowSessionWithDisc : public WindowSessionTest {
 protected:
  WindowSessionWithDisc() {
    agreeBeforehand();
    const std::string source = prefix_.path() + "/source";
    std::filesystem::create_directory(source);
    std::ofstream(source + "/first.txt") << "first";
    discTool({"create", disc_, "--media", "cd-rw", "--from", source, "--label", "SAMPLE"});
  }

  static std::string discTool(const std::vector<std::string>& arguments) {
    QStringList list;
    for (const std::string& argument : arguments) list << QString::fromStdString(argument);
    QProcess tool;
    tool.start(QStringLiteral(KELVANE_BIN_DIR "/kelvanedisc"), list);
    EXPECT_TRUE(tool.waitForFinished(-1));
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    return tool.readAllStandardOutput().toStdString();
  }

  /// What the newest session of the disc holds.
  std::string contents() const { return discTool({"ls", disc_}); }

  void runWithDisc() { run({disc_}); }

  /// Whether the disc is open, and the window shows it.
  static std::function<bool()> isOpen() {
    return [] {
      if (!isReady()) return false;
      const auto* show = shown("mainWindow")->findChild<QPushButton*>("showDiskButton");
      return show->isVisible() && isMountPoint(paths::overlayMountPoint());
    };
  }
  static void change() { std::ofstream(paths::overlayMountPoint() + "/second.txt") << "second"; }
  static bool isBurning() {
    const auto* window = shown("mainWindow");
    return window != nullptr && window->findChild<QWidget*>("burnView")->isVisible();
  }

  const std::string disc_ = prefix_.path() + "/disc.kvdisc";
};

}  // namespace kelvane::test

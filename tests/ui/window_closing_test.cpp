// SPDX-License-Identifier: GPL-2.0-or-later
// Quitting through the window, and what the window does for the application around it.
#include <QTest>

#include "ui/opened_urls.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using namespace kelvane::testing;

class WindowClosing : public WindowTest {
 protected:
  int asked_ = 0;
  std::vector<bool> replies_;
};

TEST_F(WindowClosing, ClosingAsksToQuitAndTheWindowStays) {
  window_.setQuitHandler([this] { ++asked_; });
  EXPECT_FALSE(window_.close());
  EXPECT_EQ(asked_, 1);
  EXPECT_TRUE(window_.isVisible());
}

TEST_F(WindowClosing, QuitThatIsGrantedAtOnceClosesTheWindow) {
  window_.setQuitHandler([this] { window_.allowClosing(); });
  EXPECT_TRUE(window_.close());
  EXPECT_FALSE(window_.isVisible());
}

TEST_F(WindowClosing, DeferredQuitClosesTheWindowAfterItsReply) {
  window_.setQuitHandler([this] { ++asked_; });
  window_.setTerminateReplyHandler([this](bool shouldTerminate) {
    replies_.push_back(shouldTerminate);
    if (!shouldTerminate) return;
    window_.allowClosing();
    window_.close();
  });
  window_.close();
  EXPECT_TRUE(window_.isVisible());
  window_.replyToApplicationShouldTerminate(false);
  EXPECT_TRUE(window_.isVisible());
  window_.replyToApplicationShouldTerminate(true);
  EXPECT_FALSE(window_.isVisible());
  EXPECT_THAT(replies_, ElementsAre(false, true));
  EXPECT_EQ(asked_, 1) << "closing for good does not ask again";
}

TEST_F(WindowClosing, AsksAgainWhereTheApplicationHasNotQuitAfterAll) {
  window_.setQuitHandler([this] { ++asked_; });
  window_.allowClosing();
  window_.askBeforeClosing();
  EXPECT_FALSE(window_.close());
  EXPECT_EQ(asked_, 1);
  EXPECT_TRUE(window_.isVisible());
}

TEST_F(WindowClosing, TerminateAsksLikeTheUser) {
  window_.setQuitHandler([this] { ++asked_; });
  window_.terminate();
  EXPECT_EQ(asked_, 1);
  EXPECT_TRUE(window_.isVisible());
}

TEST_F(WindowClosing, ShortcutsQuitAndClose) {
  window_.setQuitHandler([this] { ++asked_; });
  QTest::keySequence(&window_, QKeySequence(Qt::CTRL | Qt::Key_Q));
  EXPECT_EQ(asked_, 1);
  QTest::keySequence(&window_, QKeySequence(Qt::CTRL | Qt::Key_W));
  EXPECT_EQ(asked_, 2);
}

TEST_F(WindowClosing, ShortcutPressesTheOpenButtonWhereItIsShown) {
  QTest::keySequence(&window_, QKeySequence(Qt::CTRL | Qt::Key_O));
  EXPECT_THAT(actions_.calls, ElementsAre("mountBurnFS"));
  window_.setHidden(HideableView::OpenButton, true);
  QTest::keySequence(&window_, QKeySequence(Qt::CTRL | Qt::Key_O));
  EXPECT_THAT(actions_.calls, ElementsAre("mountBurnFS"));
}

TEST_F(WindowClosing, HiddenApplicationComesBackToTheFront) {
  window_.hideApplication();
  EXPECT_TRUE(window_.isMinimized());
  window_.makeKeyAndOrderFront();
  EXPECT_FALSE(window_.isMinimized());
  EXPECT_TRUE(window_.isVisible());
}

TEST_F(WindowClosing, WindowIsCentredOnItsScreen) {
  window_.move(3, 3);
  window_.centerWindows();
  const QPoint offset =
      window_.frameGeometry().center() - window_.screen()->availableGeometry().center();
  EXPECT_LE(offset.manhattanLength(), 2);
}

TEST_F(WindowClosing, WithoutAnybodyListeningNothingHappens) {
  window_.setActions(nullptr);
  click(child<QWidget>("openButton"));
  window_.terminate();
  window_.replyToApplicationShouldTerminate(true);
  EXPECT_TRUE(window_.isVisible());
}

TEST_F(WindowClosing, FilesAndVolumesAreOpenedByTheDesktop) {
  OpenedUrls opened(QStringLiteral("file"));
  window_.openFile("/tmp/a file #1");
  EXPECT_THAT(opened.addresses, ElementsAre("/tmp/a file #1"));
  // Without a file manager to be asked, a volume is opened like a file.
  window_.selectFile("/Volumes/tarnwick", "/Volumes/");
  while (opened.addresses.size() < 2) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  EXPECT_EQ(opened.addresses.back(), "/Volumes/tarnwick");
}

}  // namespace
}  // namespace kelvane

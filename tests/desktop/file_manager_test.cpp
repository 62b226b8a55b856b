// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/file_manager.h"

#include <QDir>
#include <QFile>

#include "desktop/desktop_fixture.h"

namespace kelvane::desktop {
namespace {

using test::FakeFileManager;
using test::kShortPatience;
using test::Manner;
using ::testing::ElementsAre;

class FileManager : public test::DesktopFixture {
 protected:
  void show(const std::string& path, std::chrono::milliseconds patience = kPatience) {
    showInFileManager(
        path, &context_, [this] { ++fallbacks_; }, patience);
  }

  std::string folder() const { return folder_.path().toStdString(); }

  QTemporaryDir folder_;
  QObject context_;
  int fallbacks_ = 0;
};

TEST_F(FileManager, OpensAFolder) {
  FakeFileManager manager(bus_.services());
  show(folder());
  turnUntil([&manager] { return !manager.calls.empty(); });
  EXPECT_THAT(manager.calls, ElementsAre("ShowFolders file://" + folder()));
  turn();
  EXPECT_EQ(fallbacks_, 0);
}

TEST_F(FileManager, SelectsAFileInItsFolder) {
  QFile file(folder_.filePath(QStringLiteral("ä #1")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  FakeFileManager manager(bus_.services());
  show(file.fileName().toStdString());
  turnUntil([&manager] { return !manager.calls.empty(); });
  EXPECT_THAT(manager.calls, ElementsAre("ShowItems file://" + folder() + "/%C3%A4%20%231"));
}

TEST_F(FileManager, ThatIsAbsentIsReplaced) {
  show(folder());
  EXPECT_EQ(fallbacks_, 0) << "not before the caller is done";
  turnUntil([this] { return fallbacks_ > 0; });
  EXPECT_EQ(fallbacks_, 1);
}

TEST_F(FileManager, IsReplacedWithoutABus) {
  bus_.stop();
  show(folder(), kShortPatience);
  turnUntil([this] { return fallbacks_ > 0; });
  EXPECT_EQ(fallbacks_, 1);
}

TEST_F(FileManager, ThatRefusesIsReplaced) {
  FakeFileManager manager(bus_.services());
  manager.manner = Manner::Refuses;
  show(folder());
  turnUntil([this] { return fallbacks_ > 0; });
  EXPECT_EQ(manager.calls.size(), 1U);
}

TEST_F(FileManager, ThatNeverAnswersIsReplaced) {
  FakeFileManager manager(bus_.services());
  manager.manner = Manner::Waits;
  show(folder(), kShortPatience);
  // The call may take longer to arrive than it is waited for.
  turnUntil([&] { return fallbacks_ > 0 && !manager.calls.empty(); });
  EXPECT_EQ(manager.calls.size(), 1U);
}

TEST_F(FileManager, ThatAnswersAfterTheWindowHasGoneDisturbsNobody) {
  FakeFileManager manager(bus_.services());
  manager.manner = Manner::Waits;
  {
    QObject window;
    showInFileManager(folder(), &window, [this] { ++fallbacks_; });
    turnUntil([&manager] { return !manager.calls.empty(); });
  }
  manager.answerNow();
  turn();
  EXPECT_EQ(fallbacks_, 0);
}

}  // namespace
}  // namespace kelvane::desktop

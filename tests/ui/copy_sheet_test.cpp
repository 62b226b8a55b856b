// SPDX-License-Identifier: GPL-2.0-or-later
// Files that are dropped onto the view of the open disc, or pasted: real events, and real copies
// into a folder that stands for the volume.
#include "ui/copy_sheet.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDialog>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <filesystem>
#include <fstream>

#include "desktop/fake_services.h"
#include "desktop/private_bus.h"
#include "foundation/temporary_folder.h"
#include "ui/dropped_files.h"
#include "ui/mounted_item_view.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kelvane::testing;

/// Copies what is dropped into a folder, as the controller does into the volume.
class CopyingActions : public RecordedActions {
 public:
  CopyingActions(MainWindow& window, std::string folder)
      : RecordedActions(window.mediaController()), window_(window), folder_(std::move(folder)) {}

  bool volumeTakesFiles() const override { return takesFiles && !window_.isCopying(); }
  void addFiles(const std::vector<std::string>& paths) override {
    added.push_back(paths);
    window_.beginCopySheet({paths, folder_, {}});
  }

  bool takesFiles = true;
  std::vector<std::vector<std::string>> added;

 private:
  MainWindow& window_;
  std::string folder_;
};

class DroppedFiles : public WindowTest {
 protected:
  DroppedFiles() : copying_(window_, to()) {
    fs::create_directory(to());
    fs::create_directory(from());
    window_.setActions(&copying_);
    window_.setFrame(ContentView::Message, kLeftOfWindow, Movement::Direct);
    window_.setFrame(ContentView::DiskScroll, kLeftOfWindow, Movement::Direct);
    window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Direct);
  }
  ~DroppedFiles() override {
    window_.endCopySheet();
    window_.setActions(nullptr);
  }

  std::string from(const std::string& name = {}) { return folder_.file("from/" + name); }
  std::string to(const std::string& name = {}) { return folder_.file("to/" + name); }
  static void write(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
  }
  static std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  MountedItemView* view() { return child<MountedItemView>("mountedItemView"); }
  QDialog* sheet() { return openSheet("copyPanel"); }
  QMessageBox* question() { return qobject_cast<QMessageBox*>(openSheet("copyQuestion")); }
  QMessageBox* alert() { return qobject_cast<QMessageBox*>(openSheet("alertSheet")); }

  static std::unique_ptr<QMimeData> filesOf(const std::vector<std::string>& paths) {
    auto data = std::make_unique<QMimeData>();
    QList<QUrl> urls;
    for (const std::string& path : paths) {
      urls << QUrl::fromEncoded("file://" + QByteArray::fromStdString(path).toPercentEncoding("/"));
    }
    data->setUrls(urls);
    return data;
  }

  /// What dragging the data over the middle of the view comes to; `leave` takes it away again.
  bool enter(const QMimeData& data, Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction) {
    QDragEnterEvent event(view()->rect().center(), actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view(), &event);
    return event.isAccepted();
  }
  void leave() {
    QDragLeaveEvent event;
    QApplication::sendEvent(view(), &event);
  }
  Qt::DropAction drop(const QMimeData& data) {
    if (!enter(data)) return Qt::IgnoreAction;
    QDropEvent event(view()->rect().center(), Qt::CopyAction | Qt::MoveAction, &data,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view(), &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
  }

  void waitUntilCopied() {
    ASSERT_TRUE(QTest::qWaitFor([this] { return !window_.isCopying(); }, 60000));
  }

  TemporaryFolder folder_;
  CopyingActions copying_;
};

TEST_F(DroppedFiles, AreCopiedAndTheSheetGoesAgain) {
  write(from("a.txt"), "a");
  fs::create_directory(from("folder"));
  write(from("folder/b ü"), "b");
  EXPECT_EQ(drop(*filesOf({from("a.txt"), from("folder")})), Qt::CopyAction);
  EXPECT_NE(sheet(), nullptr);
  waitUntilCopied();
  EXPECT_EQ(sheet(), nullptr);
  EXPECT_EQ(alert(), nullptr);
  EXPECT_EQ(contentOf(to("a.txt")), "a");
  EXPECT_EQ(contentOf(to("folder/b ü")), "b");
}

TEST_F(DroppedFiles, AreSeenToBeWelcomeWhileTheyHover) {
  const auto files = filesOf({from("a")});
  const QImage before = view()->grab().toImage();
  EXPECT_TRUE(enter(*files));
  EXPECT_TRUE(view()->isHighlighted());
  EXPECT_NE(view()->grab().toImage(), before);
  leave();
  EXPECT_FALSE(view()->isHighlighted());
  EXPECT_EQ(view()->grab().toImage(), before);
}

TEST_F(DroppedFiles, AreNotTakenWhileNoVolumeTakesThem) {
  copying_.takesFiles = false;
  EXPECT_FALSE(enter(*filesOf({from("a")})));
  EXPECT_FALSE(view()->isHighlighted());
  EXPECT_EQ(drop(*filesOf({from("a")})), Qt::IgnoreAction);
  EXPECT_THAT(copying_.added, IsEmpty());
}

TEST_F(DroppedFiles, AreTakenNeitherFromOtherMachinesNorAsText) {
  QMimeData text;
  text.setText("file:///etc/passwd");
  EXPECT_FALSE(enter(text));
  QMimeData remote;
  remote.setUrls({QUrl("https://example.org/a"), QUrl::fromLocalFile("/etc/passwd")});
  EXPECT_FALSE(enter(remote));
}

TEST_F(DroppedFiles, ThatCanOnlyBeMovedAreLeftAlone) {
  EXPECT_FALSE(enter(*filesOf({from("a")}), Qt::MoveAction));
}

TEST_F(DroppedFiles, KeepNamesThatAreNoText) {
  write(from("bad\xff name"), "1");
  drop(*filesOf({from("bad\xff name")}));
  waitUntilCopied();
  EXPECT_EQ(contentOf(to("bad\xff name")), "1");
}

TEST_F(DroppedFiles, ArePastedByTheKeyboard) {
  write(from("a.txt"), "a");
  QApplication::clipboard()->setMimeData(filesOf({from("a.txt")}).release());
  window_.activateWindow();
  QTest::keyClick(&window_, Qt::Key_V, Qt::ControlModifier);
  waitUntilCopied();
  EXPECT_EQ(contentOf(to("a.txt")), "a");
  QApplication::clipboard()->clear();
}

TEST_F(DroppedFiles, AreNotPastedWhereNoDiscIsOpen) {
  QApplication::clipboard()->setMimeData(filesOf({from("a.txt")}).release());
  window_.setFrame(ContentView::MountedItem, kRightOfWindow, Movement::Direct);
  QTest::keyClick(&window_, Qt::Key_V, Qt::ControlModifier);
  EXPECT_THAT(copying_.added, IsEmpty());
  QApplication::clipboard()->clear();
}

/// Files that are chosen in the window's menu, by whoever has only the keyboard.
class ChosenFiles : public DroppedFiles {
 protected:
  static constexpr auto kModifiers = Qt::ControlModifier | Qt::ShiftModifier;

  /// The desktop's chooser is no part of the window, so the toolkit's own one is shown.
  ChosenFiles() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
  ~ChosenFiles() override { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs, false); }

  void press(Qt::Key key) {
    window_.activateWindow();
    QTest::keyClick(&window_, key, kModifiers);
  }
  QFileDialog* chooser() { return window_.findChild<QFileDialog*>("fileChooser"); }
  /// Types a path into the chooser, and Return.
  void choose(const std::string& path) {
    auto* field = chooser()->findChild<QLineEdit*>("fileNameEdit");
    ASSERT_NE(field, nullptr);
    field->setText(QFile::decodeName(path.c_str()));
    QTest::keyClick(field, Qt::Key_Return);
  }
};

TEST_F(ChosenFiles, AreCopiedLikeThoseThatAreDropped) {
  write(from("a.txt"), "a");
  press(Qt::Key_A);
  ASSERT_NE(chooser(), nullptr);
  EXPECT_EQ(chooser()->windowModality(), Qt::WindowModal);
  choose(from("a.txt"));
  waitUntilCopied();
  EXPECT_EQ(contentOf(to("a.txt")), "a");
}

TEST_F(ChosenFiles, CanBeAFolder) {
  fs::create_directory(from("folder"));
  write(from("folder/a.txt"), "a");
  press(Qt::Key_D);
  ASSERT_NE(chooser(), nullptr);
  choose(from("folder"));
  waitUntilCopied();
  EXPECT_EQ(contentOf(to("folder/a.txt")), "a");
}

TEST_F(ChosenFiles, AreNoneWhereTheUserChangesTheirMind) {
  press(Qt::Key_A);
  ASSERT_NE(chooser(), nullptr);
  write(from("a.txt"), "a");
  auto* field = chooser()->findChild<QLineEdit*>("fileNameEdit");
  ASSERT_NE(field, nullptr);
  field->setText(QFile::decodeName(from("a.txt").c_str()));
  QTest::keyClick(field, Qt::Key_Escape);
  EXPECT_TRUE(chooser() == nullptr || !chooser()->isVisible());
  EXPECT_THAT(copying_.added, IsEmpty());
}

TEST_F(ChosenFiles, AreNotAskedForWhereNoDiscIsOpen) {
  window_.setFrame(ContentView::MountedItem, kRightOfWindow, Movement::Direct);
  EXPECT_FALSE(child<QAction>("addFilesEntry")->isEnabled());
  press(Qt::Key_A);
  EXPECT_EQ(chooser(), nullptr);
}

TEST_F(ChosenFiles, AreNotAskedForWhereTheVolumeTakesNone) {
  copying_.takesFiles = false;
  press(Qt::Key_A);
  EXPECT_EQ(chooser(), nullptr);
}

class TakenNames : public DroppedFiles {
 protected:
  TakenNames() {
    for (const char* name : {"a", "b", "c"}) {
      write(from(name), "new");
      write(to(name), "old");
    }
  }

  void dropAll() {
    drop(*filesOf({from("a"), from("b"), from("c")}));
    awaitQuestion();
  }
  void awaitQuestion() {
    ASSERT_TRUE(QTest::qWaitFor([this] { return question() != nullptr; }, 60000));
  }
  void answer(const char* button) {
    QMessageBox* asked = question();
    ASSERT_NE(asked, nullptr);
    auto* found = asked->findChild<QPushButton*>(QLatin1String(button));
    ASSERT_NE(found, nullptr) << button;
    click(found);
  }
};

TEST_F(TakenNames, AreAskedAboutOneByOne) {
  dropAll();
  EXPECT_THAT(question()->text().toStdString(), ::testing::HasSubstr("“a”"));
  answer("copyReplace");
  awaitQuestion();
  answer("copySkip");
  awaitQuestion();
  answer("copyKeepBoth");
  waitUntilCopied();
  EXPECT_EQ(contentOf(to("a")), "new");
  EXPECT_EQ(contentOf(to("b")), "old");
  EXPECT_EQ(contentOf(to("c")), "old");
  EXPECT_EQ(contentOf(to("c (2)")), "new");
}

TEST_F(TakenNames, AreAskedAboutOnceWhereTheAnswerIsForAll) {
  dropAll();
  question()->findChild<QCheckBox*>("copyForAll")->setChecked(true);
  answer("copyReplace");
  waitUntilCopied();
  for (const char* name : {"a", "b", "c"}) EXPECT_EQ(contentOf(to(name)), "new");
}

TEST_F(TakenNames, AreBothKeptByReturnAndTheCopyIsCancelledByEscape) {
  dropAll();
  QTest::keyClick(question(), Qt::Key_Return);
  awaitQuestion();
  QTest::keyClick(question(), Qt::Key_Escape);
  waitUntilCopied();
  EXPECT_EQ(contentOf(to("a (2)")), "new");
  EXPECT_FALSE(fs::exists(to("b (2)")));
  EXPECT_EQ(alert(), nullptr) << "who has cancelled it knows";
}

TEST_F(TakenNames, AreToldAsTheyAreWhereTheirCharactersHaveSeveralBytes) {
  std::string name;
  for (int count = 0; count < 25; ++count) name += "漢";
  write(from(name), "new");
  write(to(name), "old");
  drop(*filesOf({from(name)}));
  awaitQuestion();
  EXPECT_THAT(question()->text().toStdString(), ::testing::HasSubstr("“" + name + "”"));
  answer("copySkip");
  waitUntilCopied();
}

TEST_F(TakenNames, OfAFolderCannotBeReplacedByAFile) {
  fs::remove(to("a"));
  fs::create_directory(to("a"));
  dropAll();
  EXPECT_EQ(question()->findChild<QPushButton*>("copyReplace"), nullptr);
  EXPECT_NE(question()->findChild<QPushButton*>("copyKeepBoth"), nullptr);
}

TEST_F(TakenNames, WhoseQuestionStandsDoNotHoldUpAnEndFromElsewhere) {
  dropAll();
  window_.endCopySheet();
  EXPECT_FALSE(window_.isCopying());
  EXPECT_EQ(question(), nullptr);
  EXPECT_EQ(sheet(), nullptr);
  EXPECT_EQ(contentOf(to("a")), "old");
}

/// A copy that waits for an answer, and so is under way for as long as a test wants.
class RunningCopy : public TakenNames {
 protected:
  RunningCopy() { dropAll(); }
};

TEST_F(RunningCopy, TellsWhatIsCopiedHowFarItIsAndTakesNoOther) {
  answer("copySkip");
  awaitQuestion();
  auto* bar = sheet()->findChild<QProgressBar*>("copyProgressIndicator");
  ASSERT_TRUE(QTest::qWaitFor([bar] { return bar->value() > 0; }, 60000));
  EXPECT_EQ(bar->value(), bar->maximum() / 3);
  EXPECT_THAT(sheet()->findChild<QLabel*>("copyAmountField")->text().toStdString(),
              ::testing::StartsWith("1 of 3 files"));
  EXPECT_FALSE(enter(*filesOf({from("a")})));
}

TEST_F(RunningCopy, IsSeenInTheTitleAndTheTaskBarUntilItEnds) {
  const test::PrivateBus bus;
  const test::FakeLauncher launcher(bus.services());
  answer("copySkip");
  awaitQuestion();
  const QString title = QStringLiteral("33% – HOLIDAY – KelvaneFS");
  window_.setVolumeNameField("HOLIDAY");
  EXPECT_TRUE(QTest::qWaitFor([&] { return window_.windowTitle() == title; }, 60000))
      << window_.windowTitle().toStdString();
  // The volume's room changes with all that is copied, and the view of the disc is filled again.
  sheet()->findChild<QTimer*>()->stop();
  window_.setVolumeNameField("HOLIDAY");
  EXPECT_EQ(window_.windowTitle(), title);
  answer("copySkip");
  awaitQuestion();
  answer("copySkip");
  waitUntilCopied();
  EXPECT_EQ(window_.windowTitle(), "HOLIDAY – KelvaneFS");
  EXPECT_TRUE(QTest::qWaitFor(
      [&launcher] { return !launcher.shown.empty() && launcher.shown.back().ends_with(" none"); },
      60000));
  EXPECT_THAT(launcher.shown, ::testing::Contains("application://kelvanefs.desktop 33%"));
}

TEST_F(RunningCopy, IsSeenNoMoreInTheTitleWhenItIsCancelledFromElsewhere) {
  answer("copySkip");
  awaitQuestion();
  ASSERT_TRUE(QTest::qWaitFor([this] { return window_.windowTitle().startsWith("33%"); }, 60000));
  window_.endCopySheet();
  EXPECT_EQ(window_.windowTitle(), "KelvaneFS");
}

TEST_F(RunningCopy, HowMuchIsCopiedIsSpoken) {
  answer("copySkip");
  awaitQuestion();
  const auto* amount = sheet()->findChild<QLabel*>("copyAmountField");
  ASSERT_TRUE(QTest::qWaitFor([amount] { return amount->text().startsWith("1 of 3"); }, 60000));
  EXPECT_EQ(amount->accessibleName(), amount->text());
  EXPECT_EQ(amount->accessibleDescription(), "How much is copied");
}

TEST_F(RunningCopy, ThatWasCancelledLeavesNoWordForTheNextOne) {
  click(sheet()->findChild<QPushButton*>("copyCancelButton"));
  waitUntilCopied();
  drop(*filesOf({from("a")}));
  EXPECT_EQ(sheet()->findChild<QLabel*>("copyRemainingField")->text(), "");
}

TEST_F(RunningCopy, IsCancelledByTheButtonOfItsSheet) {
  answer("copySkip");
  awaitQuestion();
  click(sheet()->findChild<QPushButton*>("copyCancelButton"));
  waitUntilCopied();
  EXPECT_EQ(sheet(), nullptr);
  EXPECT_EQ(contentOf(to("b")), "old");
}

TEST_F(RunningCopy, IsCancelledByClosingItsSheet) {
  sheet()->close();
  waitUntilCopied();
  EXPECT_EQ(contentOf(to("a")), "old");
}

TEST_F(DroppedFiles, ThatCouldNotBeCopiedAreNamedWithTheReason) {
  write(from("good"), "1");
  drop(*filesOf({from("missing"), from("good"), folder_.file("to")}));
  waitUntilCopied();
  ASSERT_NE(alert(), nullptr);
  EXPECT_EQ(alert()->text(), "Not everything could be copied");
  const std::string told = alert()->informativeText().toStdString();
  EXPECT_THAT(told, ::testing::HasSubstr("“missing”: it cannot be read"));
  EXPECT_THAT(told, ::testing::HasSubstr("“to”: the disc itself is in this folder"));
  EXPECT_EQ(contentOf(to("good")), "1");
}

TEST(LocalFiles, AreReadFromWhatWasDroppedAsTheBytesThatTheyAre) {
  QMimeData data;
  EXPECT_EQ(localFilesIn(nullptr), std::nullopt);
  EXPECT_EQ(localFilesIn(&data), std::nullopt);
  data.setUrls({QUrl::fromEncoded("file:///a%20b/%FF%25"), QUrl::fromLocalFile("/ü")});
  EXPECT_THAT(localFilesIn(&data).value_or(std::vector<std::string>()),
              ElementsAre("/a b/\xff%", "/ü"));
}

}  // namespace
}  // namespace kelvane

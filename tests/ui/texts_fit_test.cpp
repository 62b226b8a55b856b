// SPDX-License-Identifier: GPL-2.0-or-later
// No text is cut and nothing lies over another thing, in every state, in both languages, with
// platform fonts of 10 to 18 points, laid out from either side, and on screens of more pixels.
#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <tuple>

#include "ui/header_view.h"
#include "ui/sliding_area.h"
#include "ui/view_parts.h"
#include "ui/window_states.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::IsEmpty;
using namespace kelvane::testing;

std::string nameOf(const QWidget& widget) {
  return widget.objectName().toStdString() + " (" + widget.accessibleName().toStdString() + ")";
}

bool isCut(QWidget* widget) {
  if (const auto* label = qobject_cast<QLabel*>(widget)) {
    if (label->text().isEmpty()) return false;
    const QRect room = label->contentsRect();
    if (label->wordWrap()) return label->heightForWidth(label->width()) > label->height();
    // The label of a field has a mark in its text that is not shown.
    const QString shown = label->buddy() ? withoutMnemonicMark(label->text()) : label->text();
    return label->fontMetrics().horizontalAdvance(shown) > room.width() ||
           label->fontMetrics().height() > room.height() + 1;
  }
  const auto* button = qobject_cast<QAbstractButton*>(widget);
  if (!button || button->text().isEmpty()) return false;
  const QSize needed = button->minimumSizeHint();
  return needed.width() > button->width() || needed.height() > button->height();
}

/// What of the visible widgets below `top` is cut, reaches out of what is around it, or lies over
/// its neighbour.
std::vector<std::string> misfits(QWidget* top) {
  std::vector<std::string> found;
  for (QWidget* widget : top->findChildren<QWidget*>()) {
    if (!widget->isVisible() || widget->window() != top->window()) continue;
    if (isCut(widget)) found.push_back("cut: " + nameOf(*widget));
    QWidget* around = widget->parentWidget();
    const bool slides = qobject_cast<SlidingArea*>(around) != nullptr ||
                        qobject_cast<HeaderView*>(around) != nullptr;
    const bool scrolls = around->objectName().startsWith(QLatin1String("qt_scrollarea"));
    if (!slides && !scrolls && !around->rect().contains(widget->geometry())) {
      found.push_back("outside: " + nameOf(*widget));
    }
    for (QWidget* other :
         around->findChildren<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly)) {
      if (other == widget || !other->isVisible() || !qobject_cast<QAbstractButton*>(widget))
        continue;
      if (other->geometry().intersects(widget->geometry())) {
        found.push_back("over another: " + nameOf(*widget));
      }
    }
  }
  return found;
}

class TextsFit
    : public ::testing::TestWithParam<std::tuple<const char*, int, Qt::LayoutDirection>> {
 protected:
  TextsFit() : language_(std::get<0>(GetParam())), before_(QApplication::font()) {
    QFont font = before_;
    font.setPointSize(std::get<1>(GetParam()));
    QApplication::setFont(font);
    QApplication::setLayoutDirection(std::get<2>(GetParam()));
  }
  ~TextsFit() override {
    QApplication::setLayoutDirection(Qt::LeftToRight);
    QApplication::setFont(before_);
  }

 private:
  Language language_;
  QFont before_;
};

TEST_P(TextsFit, InEveryState) {
  const Stillness stillness;
  MainWindow window;
  leaveState(window);
  window.makeKeyAndOrderFront();
  for (const WindowState& state : windowStates()) {
    QWidget* top = state.enter(window);
    ASSERT_NE(top, nullptr) << state.name;
    ASSERT_EQ(top->layoutDirection(), std::get<2>(GetParam())) << state.name;
    QCoreApplication::processEvents();
    EXPECT_THAT(misfits(top), IsEmpty()) << state.name;
    leaveState(window);
    QCoreApplication::processEvents();
  }
}

std::string languageAndFont(const ::testing::TestParamInfo<TextsFit::ParamType>& test) {
  return std::string(std::get<0>(test.param)) + std::to_string(std::get<1>(test.param));
}

INSTANTIATE_TEST_SUITE_P(LanguagesAndFonts, TextsFit,
                         ::testing::Combine(::testing::Values("en", "de"),
                                            ::testing::Values(10, 11, 13, 15, 18),
                                            ::testing::Values(Qt::LeftToRight)),
                         languageAndFont);

INSTANTIATE_TEST_SUITE_P(FromTheRight, TextsFit,
                         ::testing::Combine(::testing::Values("en", "de"),
                                            ::testing::Values(10, 18),
                                            ::testing::Values(Qt::RightToLeft)),
                         languageAndFont);

/// A platform with a screen as large as those that are scaled; its own would be too small then.
QString platformWithLargeScreen(const QTemporaryDir& folder) {
  QFile file(folder.filePath(QStringLiteral("screen.json")));
  EXPECT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(R"({"screens": [{"name": "large", "x": 0, "y": 0, "width": 2560, "height": 1600,
                              "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})");
  return QStringLiteral("offscreen:configfile=") + file.fileName();
}

/// The number of pixels for a point is fixed when a program starts, so the tests above run in
/// another process.
TEST(TextsFitOnScreensOfMorePixels, AtEveryScaleFactor) {
  const QTemporaryDir folder;
  for (const char* factor : {"1.25", "1.5", "2"}) {
    QProcess again;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QLatin1String(factor));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platformWithLargeScreen(folder));
    again.setProcessEnvironment(environment);
    again.setProcessChannelMode(QProcess::MergedChannels);
    again.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--gtest_filter=LanguagesAndFonts/TextsFit.*"),
                 QStringLiteral("--gtest_brief=1")});
    ASSERT_TRUE(again.waitForFinished(-1));
    const std::string said = again.readAll().toStdString();
    EXPECT_EQ(again.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(again.exitCode(), 0) << factor << "\n" << said;
    // Where no test has that name, there is nothing to fail either.
    EXPECT_THAT(said, ::testing::Not(::testing::HasSubstr("[==========] 0 tests")));
  }
}

}  // namespace
}  // namespace kelvane

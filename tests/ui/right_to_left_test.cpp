// SPDX-License-Identifier: GPL-2.0-or-later
// Where people read from the right to the left, every state is its own mirror image.
#include <QApplication>
#include <QTest>
#include <cstdlib>
#include <map>

#include "ui/window_states.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::IsEmpty;
using namespace kelvane::testing;

/// Lays out from one side while it lives.
class Reading {
 public:
  explicit Reading(Qt::LayoutDirection direction) { QApplication::setLayoutDirection(direction); }
  ~Reading() { QApplication::setLayoutDirection(Qt::LeftToRight); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
};

using Places = std::map<std::string, QRect>;

/// The visible widgets below `item`, by how they are reached from there, and where they are in
/// `top`.
void addPlaces(const QWidget& item, const std::string& path, const QWidget& top, Places& places) {
  int number = 0;
  for (const QWidget* child : item.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    ++number;
    if (!child->isVisible() || child->isWindow()) continue;
    const std::string name = child->objectName().isEmpty()
                                 ? std::string(child->metaObject()->className())
                                 : child->objectName().toStdString();
    std::string childPath = path + "/" + std::to_string(number);
    childPath.append(" ").append(name);
    places[childPath] = QRect(child->mapTo(&top, QPoint()), child->size());
    addPlaces(*child, childPath, top, places);
  }
}

struct Layout {
  QSize size;
  Places places;
};

std::map<std::string, Layout> layoutsOfAllStates(Qt::LayoutDirection direction) {
  const Reading reading(direction);
  const Stillness stillness;
  MainWindow window;
  leaveState(window);
  window.makeKeyAndOrderFront();
  std::map<std::string, Layout> layouts;
  for (const WindowState& state : windowStates()) {
    const QWidget* top = state.enter(window);
    QCoreApplication::processEvents();
    Layout& layout = layouts[state.name];
    layout.size = top->size();
    addPlaces(*top, {}, *top, layout.places);
    leaveState(window);
    QCoreApplication::processEvents();
  }
  return layouts;
}

QRect mirrored(const QRect& place, const QSize& around) {
  return {around.width() - place.x() - place.width(), place.y(), place.width(), place.height()};
}

std::string toText(const QRect& place) {
  return std::to_string(place.x()) + "," + std::to_string(place.y()) + " " +
         std::to_string(place.width()) + "x" + std::to_string(place.height());
}

/// What in `fromTheRight` is not where it is in the mirror image of `fromTheLeft`.
std::vector<std::string> differences(const Layout& fromTheLeft, const Layout& fromTheRight) {
  constexpr int kRounding = 1;
  std::vector<std::string> found;
  for (const auto& [path, place] : fromTheLeft.places) {
    const QRect wanted = mirrored(place, fromTheLeft.size);
    const auto other = fromTheRight.places.find(path);
    const QRect is = other == fromTheRight.places.end() ? QRect() : other->second;
    const bool same = std::abs(is.x() - wanted.x()) <= kRounding && is.y() == wanted.y() &&
                      is.size() == wanted.size();
    if (!same) found.push_back(path + " is " + toText(is) + " and not " + toText(wanted));
  }
  return found;
}

TEST(RightToLeft, EveryStateIsAMirrorImage) {
  const auto fromTheLeft = layoutsOfAllStates(Qt::LeftToRight);
  const auto fromTheRight = layoutsOfAllStates(Qt::RightToLeft);
  for (const auto& [state, layout] : fromTheLeft) {
    EXPECT_FALSE(layout.places.empty()) << state;
    EXPECT_EQ(fromTheRight.at(state).size, layout.size) << state;
    EXPECT_THAT(differences(layout, fromTheRight.at(state)), IsEmpty()) << state;
  }
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// The disc list: what it shows of the records, and which of them can be selected and opened.
#include <QHelpEvent>
#include <QImage>
#include <QListView>
#include <QPainter>
#include <QTest>
#include <QToolTip>

#include "ui/disc_entry_cells.h"
#include "ui/disc_list_model.h"
#include "ui/display_colors.h"
#include "ui/sample_records.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kelvane::testing;

class DiscList : public WindowTest {
 protected:
  DiscList() {
    window_.mediaController().addObjects({refusedRecord("Old", "Disc is full"),
                                          usableRecord("Holiday"), loadingRecord("Loading disc…"),
                                          usableRecord("Music", "DVDPlusRW")});
  }

  QListView* list() { return child<QListView>("diskTableView"); }
  QString text(int row, int role) { return list()->model()->index(row, 0).data(role).toString(); }

  std::optional<size_t> selection() { return window_.mediaController().selectionIndex(); }
  std::vector<int> selectedRows() {
    std::vector<int> rows;
    for (const QModelIndex& index : list()->selectionModel()->selectedIndexes()) {
      rows.push_back(index.row());
    }
    return rows;
  }
};

TEST_F(DiscList, ShowsARowForEachRecordWithNameAndDeviceLine) {
  ASSERT_EQ(list()->model()->rowCount(), 4);
  EXPECT_EQ(text(1, DiscListModel::VolumeNameRole), "Holiday");
  EXPECT_EQ(text(1, DiscListModel::DeviceLineRole), "CDRW in KELVANE Emulated Burner");
  EXPECT_EQ(text(1, DiscListModel::RefusalRole), "");
  EXPECT_EQ(text(0, DiscListModel::RefusalRole), "Disc is full");
}

TEST_F(DiscList, DiscThatIsStillLoadingShowsTheDriveAlone) {
  EXPECT_EQ(text(2, DiscListModel::DeviceLineRole), "KELVANE Emulated Burner");
  EXPECT_EQ(text(2, DiscListModel::RefusalRole), "");
}

TEST_F(DiscList, ScreenReaderHearsNameDriveAndReason) {
  EXPECT_EQ(text(0, Qt::AccessibleTextRole), "Old, CDR in KELVANE Emulated Burner, Disc is full");
  EXPECT_EQ(text(1, Qt::AccessibleTextRole), "Holiday, CDRW in KELVANE Emulated Burner");
}

TEST_F(DiscList, ClickSelectsAUsableDiscForTheController) {
  clickRow(3);
  EXPECT_EQ(selection(), 3U);
  EXPECT_THAT(selectedRows(), ElementsAre(3));
  ASSERT_EQ(window_.mediaController().selectedObjects().size(), 1U);
  EXPECT_EQ(window_.mediaController().selectedObjects().back().description.volumename, "Music");
}

TEST_F(DiscList, ClickOnARefusedOrLoadingDiscLeavesTheSelectionAlone) {
  clickRow(1);
  clickRow(0);
  EXPECT_EQ(selection(), 1U);
  EXPECT_THAT(selectedRows(), ElementsAre(1));
  clickRow(2);
  EXPECT_EQ(selection(), 1U);
  EXPECT_THAT(selectedRows(), ElementsAre(1));
}

TEST_F(DiscList, ArrowKeysVisitEveryDiscButSelectOnlyUsableOnes) {
  clickRow(1);
  list()->setFocus();
  pressKey(Qt::Key_Down);
  EXPECT_EQ(list()->currentIndex().row(), 2) << "a refused disc can be visited, to hear why";
  EXPECT_EQ(selection(), 1U);
  pressKey(Qt::Key_Down);
  EXPECT_EQ(list()->currentIndex().row(), 3);
  EXPECT_EQ(selection(), 3U);
  pressKey(Qt::Key_Home);
  EXPECT_EQ(list()->currentIndex().row(), 0);
  EXPECT_EQ(selection(), 3U);
}

TEST_F(DiscList, DoubleClickOpensTheDisc) {
  doubleClickRow(1);
  EXPECT_EQ(selection(), 1U);
  EXPECT_THAT(actions_.calls, ElementsAre("tableViewDoubleClicked"));
}

TEST_F(DiscList, DoubleClickOnARefusedDiscDoesNotOpenTheSelectedOne) {
  clickRow(1);
  doubleClickRow(0);
  EXPECT_THAT(actions_.calls, IsEmpty());
}

TEST_F(DiscList, ReturnOpensTheSelectedDisc) {
  clickRow(1);
  list()->setFocus();
  pressKey(Qt::Key_Return);
  pressKey(Qt::Key_Enter);
  EXPECT_THAT(actions_.calls, ElementsAre("tableViewDoubleClicked", "tableViewDoubleClicked"));
}

TEST_F(DiscList, ReturnOnARefusedDiscOpensNothing) {
  clickRow(1);
  list()->setFocus();
  pressKey(Qt::Key_Up);
  ASSERT_EQ(list()->currentIndex().row(), 0);
  pressKey(Qt::Key_Return);
  EXPECT_THAT(actions_.calls, IsEmpty());
}

TEST_F(DiscList, SelectionOfTheControllerIsShown) {
  window_.mediaController().setSelectionIndex(3);
  EXPECT_THAT(selectedRows(), ElementsAre(3));
  window_.mediaController().setSelectionIndex(std::nullopt);
  EXPECT_THAT(selectedRows(), IsEmpty());
}

TEST_F(DiscList, SelectionIndexOutlivesANewListOfTheSameLength) {
  clickRow(3);
  const std::vector<DeviceRecord> again = window_.mediaController().arrangedObjects();
  window_.mediaController().removeArrangedObjects();
  EXPECT_EQ(list()->model()->rowCount(), 0);
  EXPECT_THAT(selectedRows(), IsEmpty());
  window_.mediaController().addObjects(again);
  EXPECT_EQ(selection(), 3U);
  EXPECT_THAT(selectedRows(), ElementsAre(3));
}

TEST_F(DiscList, SelectionIndexEndsWithAListThatIsTooShortForIt) {
  clickRow(3);
  window_.mediaController().removeArrangedObjects();
  window_.mediaController().addObjects({usableRecord("Other")});
  EXPECT_EQ(selection(), std::nullopt);
  EXPECT_THAT(selectedRows(), IsEmpty());
}

TEST_F(DiscList, BadgeIsAsWideAsItsTextAnd20PointsFromTheRightEdge) {
  const QRectF row(0, 43, 402, 43);
  const QString text = QStringLiteral("Format not supported");
  const QRectF badge = USMessageTextCell(text).badgeRect(row, 1.0);
  const QFontMetricsF metrics(cellFont(8, 1.0));
  EXPECT_DOUBLE_EQ(badge.right(), 402 - 20);
  EXPECT_DOUBLE_EQ(badge.width(), metrics.horizontalAdvance(text) + 12);
  EXPECT_DOUBLE_EQ(badge.height(), 14);
  EXPECT_DOUBLE_EQ(badge.top(), 43 + 21.5 - 7 + 0.5);
}

constexpr QSize kRow{402, 43};

QImage emptyRow() {
  QImage image(kRow, QImage::Format_RGB32);
  image.fill(Qt::black);
  return image;
}

/// The font of that many points, by its name or, where it is missing, the platform's.
QFont fontOf(int points) {
  QFont font = QApplication::font();
  font.setFamilies({QStringLiteral("Lucida Grande"), font.family()});
  font.setPixelSize(points);
  return font;
}

/// Draws a line from `x` on, whose middle lies `offset` below the middle of a row.
void drawReference(QPainter& painter, double x, double offset, int points, const QColor& color,
                   const QString& text) {
  painter.setFont(fontOf(points));
  painter.setPen(color);
  const QFontMetricsF metrics(painter.font());
  const double top = (kRow.height() - metrics.height()) / 2 + offset;
  painter.drawText(QPointF(x, top + metrics.ascent()), text);
}

TEST_F(DiscList, NameStandsSixPointsAboveTheMiddleAndTheDriveNineBelow) {
  constexpr double kLeft = 58;
  const QString name = QStringLiteral("Holiday");
  const QString drive = QStringLiteral("CDRW in BURNER");
  for (const bool highlighted : {false, true}) {
    QImage drawn = emptyRow();
    QImage expected = emptyRow();
    {
      QPainter painter(&drawn);
      CenteredTextCell(name, drive)
          .drawWithFrame(painter, QRectF(kLeft, 0, 300, kRow.height()), 1.0, highlighted);
      QPainter reference(&expected);
      const QColor second = highlighted ? QColor(Qt::white) : display_colors::kSecondaryText;
      drawReference(reference, kLeft, -6.0, 13, Qt::white, name);
      drawReference(reference, kLeft, 9.0, 9, second, drive);
    }
    EXPECT_EQ(drawn, expected) << (highlighted ? "highlighted" : "not highlighted");
  }
}

TEST_F(DiscList, DriveIsGreyBesideTheWhiteNameAndTheirFontHasItsName) {
  const QColor grey = display_colors::kSecondaryText;
  EXPECT_LT(grey.saturationF(), 0.1);
  EXPECT_LT(grey.lightness(), 200);
  EXPECT_EQ(cellFont(13, 1.0).families().front(), QStringLiteral("Lucida Grande"));
  EXPECT_EQ(cellFont(13, 1.0).pixelSize(), 13);
  EXPECT_EQ(cellFont(13, 2.0).pixelSize(), 26);
}

TEST_F(DiscList, EntryNeverShowsATipOfWhatIsInIt) {
  for (int row = 0; row < list()->model()->rowCount(); ++row) {
    EXPECT_FALSE(list()->model()->index(row, 0).data(Qt::ToolTipRole).isValid());
  }
  const QPoint where = list()->visualRect(list()->model()->index(0, 0)).center();
  QHelpEvent wish(QEvent::ToolTip, where, list()->viewport()->mapToGlobal(where));
  QApplication::sendEvent(list()->viewport(), &wish);
  EXPECT_FALSE(QToolTip::isVisible());
}

TEST_F(DiscList, BackgroundOfTheListIsThatOfTheContentArea) {
  window_.mediaController().removeArrangedObjects();
  window_.setHidden(HideableView::Message, true);
  QCoreApplication::processEvents();
  ASSERT_TRUE(list()->isVisible());
  const QImage withList = child<QWidget>("contentArea")->grab().toImage();
  window_.setHidden(HideableView::DiskScroll, true);
  QCoreApplication::processEvents();
  ASSERT_FALSE(list()->isVisible());
  EXPECT_EQ(withList, child<QWidget>("contentArea")->grab().toImage());
}

QImage drawnBadge(const QString& text) {
  QImage image(402, 43, QImage::Format_RGB32);
  image.fill(Qt::black);
  QPainter painter(&image);
  USMessageTextCell(text).drawWithFrame(painter, image.rect(), 1.0);
  return image;
}

TEST_F(DiscList, BadgeOfADiscThatIsNotRefusedDrawsNothing) {
  QImage untouched(402, 43, QImage::Format_RGB32);
  untouched.fill(Qt::black);
  EXPECT_EQ(drawnBadge(QString()), untouched);
  EXPECT_TRUE(USMessageTextCell(QString()).badgeRect(QRectF(0, 0, 402, 43), 1.0).isEmpty());
}

TEST_F(DiscList, BadgeIsRed) {
  const QImage badge = drawnBadge(QStringLiteral("Disc is full"));
  const QColor edge = badge.pixelColor(402 - 20 - 3, 21);
  EXPECT_NEAR(edge.redF(), 0.9, 0.02);
  EXPECT_NEAR(edge.greenF(), 0.3, 0.02);
  EXPECT_NEAR(edge.blueF(), 0.3, 0.02);
  EXPECT_EQ(badge.pixelColor(402 - 20 + 2, 21), QColor(Qt::black)) << "the margin stays free";
}

TEST_F(DiscList, BadgeIsRoundedAndItsTextInTheMiddleOfIt) {
  const QString text = QStringLiteral("Disc is full");
  const QFontMetricsF metrics(fontOf(8));
  const double width = metrics.horizontalAdvance(text);
  const QRectF badge(kRow.width() - width - 12 - 20, kRow.height() / 2.0 - 7 + 0.5, width + 12, 14);
  QImage expected = emptyRow();
  {
    QPainter reference(&expected);
    reference.setRenderHint(QPainter::Antialiasing);
    reference.setPen(Qt::NoPen);
    reference.setBrush(QColor::fromRgbF(0.9F, 0.3F, 0.3F));
    reference.drawRoundedRect(badge, 6, 6);
    drawReference(reference, badge.center().x() - width / 2, 0.5, 8, Qt::white, text);
  }
  EXPECT_EQ(drawnBadge(text), expected);
}

/// The columns of `picture` between `top` and `bottom` in which something like `color` stands.
std::vector<int> columnsOf(const QImage& picture, int top, int bottom, const QColor& color) {
  std::vector<int> found;
  for (int x = 0; x < picture.width(); ++x) {
    for (int y = top; y < bottom; ++y) {
      const QColor here = picture.pixelColor(x, y);
      if (std::abs(here.red() - color.red()) < 12 && std::abs(here.green() - color.green()) < 12 &&
          std::abs(here.blue() - color.blue()) < 12) {
        found.push_back(x);
        break;
      }
    }
  }
  return found;
}

TEST_F(DiscList, WhereTextsRunFromTheRightNameAndBadgeStandOnTheirOtherSides) {
  const QColor red = QColor::fromRgbF(0.9F, 0.3F, 0.3F);
  list()->scrollToTop();
  QCoreApplication::processEvents();
  const QImage fromLeft = list()->viewport()->grab().toImage();
  list()->setLayoutDirection(Qt::RightToLeft);
  QCoreApplication::processEvents();
  const QImage fromRight = list()->viewport()->grab().toImage();
  const std::vector<int> badge = columnsOf(fromLeft, 0, 43, red);
  const std::vector<int> mirrored = columnsOf(fromRight, 0, 43, red);
  ASSERT_FALSE(badge.empty());
  ASSERT_FALSE(mirrored.empty());
  EXPECT_GT(badge.front(), fromLeft.width() / 2);
  EXPECT_NEAR(mirrored.front(), 20, 1);
  EXPECT_EQ(mirrored.size(), badge.size());
  // The second row has no badge: what is white there is the name.
  const std::vector<int> name = columnsOf(fromLeft, 44, 64, Qt::white);
  const std::vector<int> nameFromRight = columnsOf(fromRight, 44, 64, Qt::white);
  ASSERT_FALSE(name.empty());
  ASSERT_FALSE(nameFromRight.empty());
  EXPECT_LT(name.back(), fromLeft.width() / 2);
  EXPECT_GT(nameFromRight.front(), fromRight.width() / 2);
}

TEST_F(DiscList, SelectedRowIsOutlinedWhileItHasTheKeyboard) {
  clickRow(1);
  list()->setFocus();
  const QImage focused = list()->viewport()->grab().toImage();
  child<QWidget>("openButton")->setFocus();
  EXPECT_NE(list()->viewport()->grab().toImage(), focused);
}

TEST_F(DiscList, LongNamesEndBeforeTheBadge) {
  window_.mediaController().removeArrangedObjects();
  window_.mediaController().addObjects(
      {refusedRecord(std::string(200, 'W'), "Disc type not supported")});
  QCoreApplication::processEvents();
  const QImage drawn = list()->viewport()->grab().toImage();
  const QRectF row = list()->visualRect(list()->model()->index(0, 0));
  const QRectF badge =
      USMessageTextCell(QStringLiteral("Disc type not supported")).badgeRect(row, 1.0);
  const int gap = static_cast<int>(badge.left()) - 5;
  bool isWritten = false;
  for (int x = 0; x < gap; ++x) isWritten = isWritten || drawn.pixelColor(x, 14).lightness() > 150;
  EXPECT_TRUE(isWritten) << "there is no name that could be too long";
  for (int y = 2; y < 40; ++y) {
    EXPECT_LT(drawn.pixelColor(gap, y).lightness(), 200) << "text at line " << y;
  }
}

}  // namespace
}  // namespace kelvane

// SPDX-License-Identifier: GPL-2.0-or-later
// Draws the disc of the disc list, of the volume and of the application, and writes it into the
// folder given: as diskicon.png (and again with twice the pixels, for screens that have them) and
// disk.icns, and for the desktop as kelvanefs.png in the sizes of an icon theme.
#include <QBuffer>
#include <QConicalGradient>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

namespace {

QPainterPath ring(double innerRadius, double outerRadius) {
  QPainterPath path;
  path.addEllipse(QPointF(0, 0), outerRadius, outerRadius);
  path.addEllipse(QPointF(0, 0), innerRadius, innerRadius);
  path.setFillRule(Qt::OddEvenFill);
  return path;
}

/// The sheen of a disc: light sectors that turn with the angle.
QConicalGradient sheen() {
  QConicalGradient gradient(QPointF(0, 0), 35);
  const QColor silver(0xc9, 0xd1, 0xda);
  const QColor light(0xfb, 0xfc, 0xfe);
  const QColor blue(0xa9, 0xc4, 0xe6);
  const QColor rose(0xd9, 0xc6, 0xe2);
  gradient.setColorAt(0.00, light);
  gradient.setColorAt(0.10, silver);
  gradient.setColorAt(0.20, blue);
  gradient.setColorAt(0.30, rose);
  gradient.setColorAt(0.40, silver);
  gradient.setColorAt(0.50, light);
  gradient.setColorAt(0.60, silver);
  gradient.setColorAt(0.70, blue);
  gradient.setColorAt(0.80, rose);
  gradient.setColorAt(0.90, silver);
  gradient.setColorAt(1.00, light);
  return gradient;
}

/// The disc, drawn on a square of 100 by 100 around the origin. The dark ring is the session burned
/// first, the green arc the one that has been added to it.
void drawDisc(QPainter& painter) {
  painter.fillPath(ring(7.5, 48), sheen());
  painter.setPen(QPen(QColor(0x5b, 0x66, 0x74), 1.2));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(QPointF(0, 0), 47.4, 47.4);
  painter.drawEllipse(QPointF(0, 0), 7.5, 7.5);

  painter.fillPath(ring(7.5, 17), QColor(0xf4, 0xf7, 0xfa, 0xd0));
  painter.setPen(QPen(QColor(0x8a, 0x95, 0xa3), 0.8));
  painter.drawEllipse(QPointF(0, 0), 17, 17);

  painter.fillPath(ring(20, 32), QColor(0x3a, 0x5f, 0x8f, 0x70));
  painter.setPen(QPen(QColor(0x1f, 0xa9, 0x7a), 7, Qt::SolidLine, Qt::RoundCap));
  painter.drawArc(QRectF(-39, -39, 78, 78), 70 * 16, -150 * 16);
}

QImage picture(int size) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(size / 2.0, size / 2.0);
  painter.scale(size / 100.0, size / 100.0);
  drawDisc(painter);
  return image;
}

QByteArray asPng(const QImage& image) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "PNG");
  return bytes;
}

/// An icon file: "icns", its length, then for each picture a type, the length of type, length and
/// data together, and a PNG file. Lengths are 32-bit and big-endian.
QByteArray asIconFile() {
  QByteArray elements;
  QDataStream elementStream(&elements, QIODevice::WriteOnly);
  for (const auto& [type, size] : {std::pair{"ic07", 128}, std::pair{"ic08", 256}}) {
    const QByteArray png = asPng(picture(size));
    elementStream.writeRawData(type, 4);
    elementStream << quint32(png.size() + 8);
    elementStream.writeRawData(png.constData(), int(png.size()));
  }
  QByteArray file;
  QDataStream stream(&file, QIODevice::WriteOnly);
  stream.writeRawData("icns", 4);
  stream << quint32(elements.size() + 8);
  stream.writeRawData(elements.constData(), int(elements.size()));
  return file;
}

bool write(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

bool writeThemeIcons(const QString& folder) {
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
    const QString place = QStringLiteral("%1hicolor/%2x%2/apps").arg(folder).arg(size);
    if (!QDir().mkpath(place)) return false;
    if (!write(place + QStringLiteral("/kelvanefs.png"), asPng(picture(size)))) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const QStringList arguments = QGuiApplication::arguments();
  if (arguments.size() != 2) return 2;
  const QString folder = arguments.at(1) + QLatin1Char('/');
  const bool written = write(folder + QStringLiteral("diskicon.png"), asPng(picture(128))) &&
                       write(folder + QStringLiteral("diskicon@2x.png"), asPng(picture(256))) &&
                       write(folder + QStringLiteral("disk.icns"), asIconFile()) &&
                       writeThemeIcons(folder);
  return written ? 0 : 1;
}

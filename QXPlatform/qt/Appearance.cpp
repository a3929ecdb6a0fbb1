#include "QXPlatform/ui/Appearance.h"

#include <QApplication>
#include <QColor>
#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetrics>
#include <QPalette>
#include <QPointF>
#include <QWidget>
#include <algorithm>
#include <array>
#include <cmath>

namespace QXPlatform {

namespace {

QPalette palette(UserInterfaceStyle style) {
  const bool isDark = style == UserInterfaceStyle::dark;
  const QColor surface(isDark ? "#1C1C1E" : "#F2F2F7");
  const QColor ink(isDark ? "#FFFFFF" : "#1C1C1E");
  QPalette colors(ink, surface, surface, surface, surface, ink, surface);
  colors.setColor(QPalette::Window, surface);
  colors.setColor(QPalette::WindowText, ink);
  colors.setColor(QPalette::Highlight, QColor(isDark ? "#0A84FF" : "#0066D6"));
  return colors;
}

const QStringList& fontFamilies() {
  // Emoji before fonts that draw some of them without colour.
  static const QStringList families{"Roboto", "Noto Color Emoji",
                                    QFontDatabase::systemFont(QFontDatabase::GeneralFont).family()};
  return families;
}

double& textScale() {
  static double scale = 1;
  return scale;
}

}  // namespace

UserInterfaceStyle userInterfaceStyle(const QWidget& view) {
  constexpr int kHalf = 128;
  return view.palette().color(QPalette::Window).lightness() < kHalf ? UserInterfaceStyle::dark
                                                                    : UserInterfaceStyle::light;
}

void setUserInterfaceStyle(UserInterfaceStyle style) {
  QApplication::setPalette(palette(style));
}

bool isReduceMotionEnabled() {
  return qEnvironmentVariable("QX_REDUCE_MOTION") == "1";
}

void setTextScale(double scale) {
  textScale() = scale;
}

QFont systemFont(SystemFontStyle style, double pointSize) {
  QFont font;
  font.setFamilies(fontFamilies());
  font.setPixelSize(qRound(pointSize * textScale()));
  font.setBold(style == SystemFontStyle::bold);
  font.setItalic(style == SystemFontStyle::italic);
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

bool hasGlyphsFor(const std::string& text) {
  const QFontMetrics metrics(systemFont(SystemFontStyle::regular, 14));
  return std::ranges::all_of(QString::fromStdString(text).toUcs4(), [&metrics](uint letter) {
    const QChar::Category category = QChar::category(letter);
    const bool isDrawn = !QChar::isSpace(letter) && category != QChar::Mark_NonSpacing &&
                         category != QChar::Other_Control && category != QChar::Other_Format;
    return !isDrawn || metrics.inFontUcs4(letter);
  });
}

double contrastRatio(const QColor& left, const QColor& right) {
  const auto light = [](float value) {
    constexpr double kLinearBelow = 0.04045;
    return value <= kLinearBelow ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  const auto luminance = [&light](const QColor& color) {
    return 0.2126 * light(color.redF()) + 0.7152 * light(color.greenF()) + 0.0722 * light(color.blueF());
  };
  const auto [darker, brighter] = std::minmax({luminance(left), luminance(right)});
  constexpr double kGlare = 0.05;
  return (brighter + kGlare) / (darker + kGlare);
}

QPainterPath continuousRoundedRect(const QRectF& rect, double radius) {
  // Of one corner, along its two sides from the corner point, in radii: three curves, each two control points
  // and an end point.
  constexpr double kReach = 1.528665;
  struct Point {
    double before;
    double after;
  };
  constexpr std::array<Point, 9> kCurves{{{1.08849296, 0},
                                          {0.86840694, 0},
                                          {0.63149379, 0.07491139},
                                          {0.37282383, 0.16905956},
                                          {0.16905956, 0.37282383},
                                          {0.07491139, 0.63149379},
                                          {0, 0.86840694},
                                          {0, 1.08849296},
                                          {0, kReach}}};
  const double unit = std::min(radius, std::min(rect.width(), rect.height()) / 2 / kReach);
  QPainterPath path(rect.topLeft() + QPointF(kReach * unit, 0));
  const auto addCorner = [&](QPointF corner, QPointF before, QPointF after) {
    const auto at = [&](const Point& point) {
      return corner + (before * point.before + after * point.after) * unit;
    };
    path.lineTo(corner + before * kReach * unit);
    for (std::size_t i = 0; i < kCurves.size(); i += 3) {
      path.cubicTo(at(kCurves[i]), at(kCurves[i + 1]), at(kCurves[i + 2]));
    }
  };
  const QPointF left(-1, 0);
  const QPointF right(1, 0);
  const QPointF up(0, -1);
  const QPointF down(0, 1);
  addCorner(rect.topRight(), left, down);
  addCorner(rect.bottomRight(), up, left);
  addCorner(rect.bottomLeft(), right, up);
  addCorner(rect.topLeft(), down, right);
  path.closeSubpath();
  return path;
}

}  // namespace QXPlatform

#include "QXPlatform/ui/Appearance.h"

#include <QApplication>
#include <QColor>
#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetrics>
#include <QPalette>
#include <QWidget>
#include <algorithm>
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

}  // namespace QXPlatform

#pragma once

#include <QString>
#include <string>

class QColor;
class QFont;
class QWidget;

namespace QXPlatform {

enum class UserInterfaceStyle { light, dark };

// The appearance that a view stands in, told by its palette.
UserInterfaceStyle userInterfaceStyle(const QWidget& view);

// Gives the whole application's views that appearance.
void setUserInterfaceStyle(UserInterfaceStyle style);

// Whether movement that only pleases is to be left out: $QX_REDUCE_MOTION is "1".
bool isReduceMotionEnabled();

enum class SystemFontStyle { regular, bold, italic };

// How large the user wants texts, 1 being the ordinary size; for fonts asked for from then on.
void setTextScale(double scale);

// The system's font; in points, which follow the screen's scale and the user's wish.
QFont systemFont(SystemFontStyle style, double pointSize);

// Whether the system has a font for every letter of the text, which is UTF-8.
bool hasGlyphsFor(const std::string& text);

// How well the one can be told from the other, from 1 to 21, by the light that they give: texts are easy to
// read from 4.5 on, signs to see from 3.
double contrastRatio(const QColor& left, const QColor& right);

}  // namespace QXPlatform

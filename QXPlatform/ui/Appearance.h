#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QString>

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

// The system's font; in points, which follow the screen's scale.
QFont systemFont(SystemFontStyle style, double pointSize);

// A rectangle whose corners run into its sides without a break in curvature.
QPainterPath continuousRoundedRect(const QRectF& rect, double radius);

}  // namespace QXPlatform

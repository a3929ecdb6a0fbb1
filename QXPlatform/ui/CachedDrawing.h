#pragma once

#include <QRect>
#include <QString>
#include <functional>

class QPainter;
class QTransform;

namespace QXPlatform {

// Whether whole points are whole pixels, and lie where one begins.
bool arePointsWholePixels(const QTransform& toPixels);

// Draws a small shape that comes again and again: once, into pixels that are kept under the key, and by
// copying them from then on, which leaves the same. `draw` gets a painter with the origin at the area's, in
// points; it has to draw one shape, or some that do not touch, and stay inside the area.
void drawCached(QPainter& painter, const QString& key, const QRect& area,
                const std::function<void(QPainter&)>& draw);

}  // namespace QXPlatform

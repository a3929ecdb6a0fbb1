#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <QString>

namespace QXPlatform {

// Draws a vector image of the application's resources in one colour: what the file says about opacity counts,
// its own colours do not. Sharp at any scale; mirrored from left to right on request. Main thread.
void drawTemplateImage(QPainter& painter, const QString& resource, const QRectF& target, const QColor& color,
                       bool isMirrored = false);

}  // namespace QXPlatform

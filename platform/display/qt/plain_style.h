// plain_style.h - visible lines where the style of the desktop draws none.
#pragma once

#include <QColor>
#include <QRect>

class QPainter;

namespace platform::qt {

// If the desktop has no style, adds visible lines, and boxes that grow with the font, to the toolkit's style.
// Call it after the application object exists.
void usePlainStyle();

// Draws a line of one pixel along the inner edge of the rectangle. It fills rectangles, because a pen's line can
// disappear on a screen with a fractional scale.
void drawOutline(QPainter& painter, const QRect& rect, const QColor& color);

}  // namespace platform::qt

// plain_style.h - makes the toolkit's own style easier to see. The toolkit uses that style if the desktop has none.
#pragma once

#include <QColor>
#include <QRect>

class QPainter;

namespace platform::qt {

// If the application uses the toolkit's own style, makes that style draw visible lines and check boxes that grow with
// the font, and makes its palette readable (readable_palette.h). The application object must exist when usePlainStyle()
// is called.
void usePlainStyle();

// Draws a line of one pixel along the inner edge of the rectangle. The line consists of filled rectangles, because the
// line of a pen can disappear on a screen with a fractional scale.
void drawOutline(QPainter& painter, const QRect& rect, const QColor& color);

}  // namespace platform::qt

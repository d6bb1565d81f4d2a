// readable_palette.h - colours of the desktop, changed where a text or a line would be hard to see.
#pragma once

#include <QPalette>

namespace platform::qt {

// The ratio of two colours' luminances, from 1 to 21.
double contrast(const QColor& one, const QColor& other);

// Of a line on the window's surface. At least 3 to 1 with usual colours, light or dark.
QColor lineColor(const QPalette& palette);

// Changes the background of a selection until its text has at least 4.5 to 1, and the text of what is disabled until it
// has at least 3 to 1.
void makeReadable(QPalette& palette);

}  // namespace platform::qt

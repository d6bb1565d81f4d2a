// readable_palette.h - replaces colours of the desktop that have too little contrast.
#pragma once

#include <QPalette>

namespace platform::qt {

// Returns the contrast ratio of two colours by the formula of WCAG 2.1, from 1 to 21.
double contrast(const QColor& one, const QColor& other);

// Returns the colour for lines that are drawn on the window's background. This colour is between the colours of the
// background and of the text. In usual palettes, light or dark, it has a contrast of at least 3 to 1 with the
// background. The contrast is lower in a palette whose text has little contrast.
QColor lineColor(const QPalette& palette);

// Changes the background of a selection until the selected text has a contrast of at least 4.5 to 1. Moves the colour
// of disabled texts towards that of enabled texts until the contrast is at least 3 to 1. If even the enabled texts have
// a contrast below 3 to 1, the disabled texts get nearly the colour of the enabled texts and stay below 3 to 1, too.
void makeReadable(QPalette& palette);

}  // namespace platform::qt

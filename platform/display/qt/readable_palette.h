// readable_palette.h - replaces colours of the desktop that have too little contrast.
#pragma once

#include <QPalette>

namespace platform::qt {

// Returns the contrast ratio of two colours by the formula of WCAG 2.1, from 1 to 21.
double contrast(const QColor& one, const QColor& other);

// Returns the colour of a line on the window's surface, which is between the colours of the surface and of the text.
// In usual palettes, light or dark, this colour has a contrast of at least 3 to 1 with the surface. In a palette whose
// text has little contrast, the colour has less.
QColor lineColor(const QPalette& palette);

// Changes the background of a selection until the selected text has a contrast of at least 4.5 to 1. Moves the colour
// of disabled texts towards that of enabled texts until the contrast is at least 3 to 1. If the colour of enabled texts
// itself has less contrast, so do the disabled texts.
void makeReadable(QPalette& palette);

}  // namespace platform::qt

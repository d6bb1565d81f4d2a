// dialog_units.h - converts virtual pixels to pixels of the desktop, according to the font and style of a dialog.
//
// The window core lays dialogs out in virtual pixels: 4 x 8 units of a template are 6 x 13 virtual pixels.
#pragma once

#include "ce/types.h"

#include <QRect>

class QWidget;

namespace platform::qt {

struct DialogUnits {
    double x = 1;  // pixels of the desktop for one virtual pixel
    double y = 1;

    QRect scaled(const RECT& rect) const;
};

// Returns the factors x and y for the font and style of the dialog. x is computed from the width of letters. y is the
// largest of four factors, for a row of text, a check box, an edit and a push button. Each factor converts the usual
// height of such an element in a template to the height that the font or the style requires. Other kinds of controls
// aren't measured.
DialogUnits dialogUnitsOf(const QWidget& dialog);

}  // namespace platform::qt

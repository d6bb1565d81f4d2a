// dialog_units.h - converts the core's virtual pixels to pixels of the desktop, by the dialog's font and style.
//
// In the core's layout of dialogs, 4 x 8 units of a template are 6 x 13 virtual pixels.
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

// x comes from the width of letters. y is large enough for the height that the style gives each kind of control.
DialogUnits dialogUnitsOf(const QWidget& dialog);

}  // namespace platform::qt

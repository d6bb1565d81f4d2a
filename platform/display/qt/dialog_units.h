// dialog_units.h - from the core's virtual pixels to the desktop's, by the dialog's font and style.
//
// The core lays dialogs out with a base unit of 6 x 13 pixels for 4 x 8 units of a template.
#pragma once

#include "ce/types.h"

#include <QRect>

class QWidget;

namespace platform::qt {

struct DialogUnits {
    double x = 1;  // pixels of the desktop for one virtual pixel
    double y = 1;

    [[nodiscard]] QRect scaled(const RECT& place) const;
};

// x by the width of letters; y so that each kind of control has at least its native height in the rows that
// templates give it.
[[nodiscard]] DialogUnits dialogUnitsOf(const QWidget& dialog);

}  // namespace platform::qt

// pictures.h - the program's pictures, by the number of the resource and the cell in it.
#pragma once

#include "ce/types.h"

#include <QIcon>
#include <QString>

namespace platform::qt {

// The SVG picture, which is sharp at every scale. If the toolkit can't draw SVG, the bitmap of the resource. Empty if
// there is no such picture.
QIcon pictureOf(WORD resource, int cell);

// The text that a screen reader reads. Empty if the picture has none.
QString pictureName(WORD resource, int cell);

// What a tip says about it. Empty if there is nothing to say.
QString pictureTip(WORD resource, int cell);

}  // namespace platform::qt

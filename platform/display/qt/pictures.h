// pictures.h - the program's pictures by the number of their resource and their cell in it.
#pragma once

#include "ce/types.h"

#include <QIcon>
#include <QString>

namespace platform::qt {

// Crisp at every scale where the desktop can draw the SVG twin, otherwise the resource's own bitmap. Empty if
// there is no such picture.
[[nodiscard]] QIcon pictureOf(WORD resource, int cell);

// What a screen reader says of it; empty if it has no name.
[[nodiscard]] QString pictureName(WORD resource, int cell);

}  // namespace platform::qt

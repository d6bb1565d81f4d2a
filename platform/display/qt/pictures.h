// pictures.h - finds the program's pictures. A bitmap resource can contain several pictures of the same size side by
// side, which are called cells. So a picture is found by the numbers of its resource and its cell. Cells are numbered
// from 0.
#pragma once

#include "ce/types.h"

#include <QIcon>
#include <QString>

namespace platform::qt {

// Returns the SVG picture, which is sharp at every scale. If the toolkit can't draw SVG, returns a picture from the
// resource's bitmap. The result is empty if there is no such picture.
QIcon pictureOf(WORD resource, int cell);

// Returns the text that a screen reader reads for the picture, or an empty text if there is none.
QString pictureName(WORD resource, int cell);

// Returns the text of a tip for the picture, or an empty text if there is none.
QString pictureTip(WORD resource, int cell);

}  // namespace platform::qt

// dialog_growth.h - computes the rectangles of a dialog's controls if the dialog is larger than its template.
//
// List boxes and multi-line edits take the additional space. Controls below them and to the right of them move. Labels
// with nothing to their right become wider.
#pragma once

#include <QRect>
#include <QSize>

#include <vector>

namespace platform::qt {

struct GrowingControl {
    enum class Kind { Fixed, Text, Lines, List };  // Text: a label; Lines: a multi-line edit

    QRect rect;  // in the layout of the template
    Kind kind = Kind::Fixed;
    bool visible = true;
};

// Is there a control that can take more space?
bool canGrow(const std::vector<GrowingControl>& controls);

// Returns the rectangles of the controls, in the same order, for a dialog that is larger by `extra`.
std::vector<QRect> grown(const std::vector<GrowingControl>& controls, QSize extra);

}  // namespace platform::qt

// keys.h - converts keys of the toolkit to virtual keys of the platform, and scrolls a view by the arrow keys.
#pragma once

#include "ce/types.h"

#include <QAbstractScrollArea>
#include <QKeyEvent>

namespace platform::qt {

// Returns 0 for a key that the platform's windows don't use.
WORD virtualKeyOf(const QKeyEvent& event);

// Scrolls by one step if `key` is an arrow key. Returns false for any other key.
bool scrollByArrow(QAbstractScrollArea& area, int key);

}  // namespace platform::qt

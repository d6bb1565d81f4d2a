// keys.h - converts keys of the toolkit to virtual keys of the platform, and scrolls a view by the arrow keys.
#pragma once

#include "ce/types.h"

#include <QAbstractScrollArea>
#include <QKeyEvent>

namespace platform::qt {

// Returns the virtual key, or 0 for a key that the platform's windows don't use.
WORD virtualKeyOf(const QKeyEvent& event);

// If `key`, a Qt::Key, is an arrow key, scrolls by one step and returns true. Returns false for any other key.
bool scrollByArrow(QAbstractScrollArea& area, int key);

}  // namespace platform::qt

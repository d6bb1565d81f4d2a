// keys.h - the toolkit's keys as virtual keys of the platform.
#pragma once

#include "ce/types.h"

#include <QAbstractScrollArea>
#include <QKeyEvent>

namespace platform::qt {

// 0 for a key that the platform's windows don't use.
WORD virtualKeyOf(const QKeyEvent& event);

// Scrolls by one step if `key` is an arrow key. False for any other key.
bool scrollByArrow(QAbstractScrollArea& area, int key);

}  // namespace platform::qt

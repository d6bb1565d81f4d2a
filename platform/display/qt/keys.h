// keys.h - the desktop's keys by the platform's numbers.
#pragma once

#include "ce/types.h"

#include <QAbstractScrollArea>
#include <QKeyEvent>

namespace platform::qt {

// 0 for a key that the platform's windows have no use for.
[[nodiscard]] WORD virtualKeyOf(const QKeyEvent& event);

// An arrow that, with Ctrl, scrolls and moves nothing else; false for any other key.
bool scrollByArrow(QAbstractScrollArea& area, int key);

}  // namespace platform::qt

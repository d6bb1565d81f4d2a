#include "keys.h"

#include "ce/window.h"

#include <QScrollBar>

#include <array>
#include <utility>

namespace platform::qt {

WORD virtualKeyOf(const QKeyEvent& event)
{
    static constexpr std::array<std::pair<int, WORD>, 21> Named{{
        {Qt::Key_Tab, VK_TAB},
        {Qt::Key_Backtab, VK_TAB},
        {Qt::Key_Return, VK_RETURN},
        {Qt::Key_Enter, VK_RETURN},
        {Qt::Key_Escape, VK_ESCAPE},
        {Qt::Key_Space, VK_SPACE},
        {Qt::Key_Backspace, VK_BACK},
        {Qt::Key_Delete, VK_DELETE},
        {Qt::Key_Left, VK_LEFT},
        {Qt::Key_Right, VK_RIGHT},
        {Qt::Key_Up, VK_UP},
        {Qt::Key_Down, VK_DOWN},
        {Qt::Key_Home, VK_HOME},
        {Qt::Key_End, VK_END},
        {Qt::Key_PageUp, VK_PRIOR},
        {Qt::Key_PageDown, VK_NEXT},
        {Qt::Key_F4, VK_F4},
        {Qt::Key_Plus, VK_ADD},
        {Qt::Key_Minus, VK_SUBTRACT},
        {Qt::Key_Asterisk, VK_MULTIPLY},
        {Qt::Key_multiply, VK_MULTIPLY},
    }};
    const int key = event.key();
    for (const auto& [ofToolkit, virtualKey] : Named) {
        if (key == ofToolkit)
            return virtualKey;
    }
    // Letters and digits have the same numbers in the toolkit and on the platform.
    const bool plain = (key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9);
    return plain ? static_cast<WORD>(key) : WORD{0};
}

bool scrollByArrow(QAbstractScrollArea& area, int key)
{
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        area.verticalScrollBar()->triggerAction(key == Qt::Key_Up ? QScrollBar::SliderSingleStepSub
                                                                  : QScrollBar::SliderSingleStepAdd);
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
        area.horizontalScrollBar()->triggerAction(key == Qt::Key_Left ? QScrollBar::SliderSingleStepSub
                                                                      : QScrollBar::SliderSingleStepAdd);
        return true;
    default:
        return false;
    }
}

}  // namespace platform::qt

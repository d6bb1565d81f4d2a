#include "dialog_state.h"

#include "controls/button.h"

namespace platform::window {

void DialogState::describe(const Window&, WindowState& state) const
{
    if (messageBox)
        state.kind = WindowKind::MessageBox;
    state.messageBoxType = messageBoxType;
    state.jobQuestion = !questionKind.empty();
}

const Window* DialogState::buttonForEnter(const Window& window) const
{
    const Window* focused = findWindow(window.thread->focus);
    if (focused && focused->parent == &window && isPushButton(*focused))
        return focused;
    const Window* standard = defaultId ? findChild(window, defaultId) : nullptr;
    return standard && isPushButton(*standard) ? standard : nullptr;
}

DialogState* findDialog(const Window* window)
{
    return window ? dynamic_cast<DialogState*>(window->state.get()) : nullptr;
}

}  // namespace platform::window

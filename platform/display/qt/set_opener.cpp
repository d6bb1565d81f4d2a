#include "set_opener.h"

#include "controls/list_display.h"
#include "resources/commands.h"
#include "window/display.h"

namespace platform::qt {

using window::WindowKind;
using window::WindowState;

namespace {

// Returns the enabled window in front, or null while the program is busy. Sets `state` to the state of that window.
HWND waitingWindow(WindowState& state)
{
    for (const HWND top : window::topLevelWindows()) {
        if (window::readWindow(top, state) && state.visible && state.enabled)
            return window::takesInput(top) ? top : nullptr;
    }
    return nullptr;
}

}  // namespace

void SetOpener::begin(std::u16string listFile)
{
    listFile_ = std::move(listFile);
    commanded_ = false;
}

void SetOpener::step()
{
    WindowState front;
    const HWND window = listFile_ ? waitingWindow(front) : nullptr;
    if (!window)
        return;
    if (!commanded_) {
        // If a dialog is open, nothing is posted. A later step posts the command after the user has closed the dialog.
        commanded_ = front.kind == WindowKind::Main && window::postCommand(window, quillbox::PartialRestore);
        return;
    }
    if (front.kind != WindowKind::Main && choose(window))
        listFile_.reset();
}

// Selects the set's row, or presses OK if the row is selected already. Returns true if OK was pressed or if the dialog
// has no such row. In both cases nothing is left to do.
bool SetOpener::choose(HWND dialog) const
{
    for (const HWND child : window::childrenOf(dialog)) {
        WindowState state;
        if (!window::readWindow(child, state) || state.kind != WindowKind::ListBox)
            continue;
        const long row = window::findListRow(child, *listFile_);
        if (row < 0)
            return true;
        if (window::listRows(child)[static_cast<std::size_t>(row)].selected)
            return window::postCaptionOk(dialog);
        (void)window::postClick(child, row);
        return false;
    }
    return true;
}

}  // namespace platform::qt

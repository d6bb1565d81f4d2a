// courier.h - carries what the user does to the core.
//
// After each post the screen waits, for a moment at most, until the program has answered, and shows what came
// of it: the next key then meets the window that has the focus by now, however fast the user types.
#pragma once

#include "controls/date_display.h"
#include "tree_control/tree_display.h"
#include "window/display.h"

#include <functional>
#include <string>

namespace platform::qt {

class Courier {
public:
    // `settle` gets the window that the post went to.
    explicit Courier(std::function<void(HWND)> settle) : settle_(std::move(settle)) {}

    // As the calls of display.h. False: dropped, since the program works or the window is disabled.
    bool click(HWND window, long row = -1) const { return carry(window, window::postClick(window, row)); }
    bool doubleClick(HWND window, long row) const { return carry(window, window::postDoubleClick(window, row)); }
    bool newText(HWND edit, std::u16string text) const
    {
        return carry(edit, window::postNewText(edit, std::move(text)));
    }
    bool typedText(HWND window, std::u16string text) const
    {
        return carry(window, window::postText(window, std::move(text)));
    }
    bool date(HWND picker, const SYSTEMTIME& date) const { return carry(picker, window::postDate(picker, date)); }
    bool treeClick(HWND tree, HTREEITEM item, window::TreePart part) const
    {
        return carry(tree, window::postTreeClick(tree, item, part));
    }
    bool treeDoubleClick(HWND tree, HTREEITEM item, window::TreePart part) const
    {
        return carry(tree, window::postTreeDoubleClick(tree, item, part));
    }
    bool close(HWND top) const { return carry(top, window::postClose(top)); }
    bool captionOk(HWND top) const { return carry(top, window::postCaptionOk(top)); }
    bool command(HWND top, WORD id) const { return carry(top, window::postCommand(top, id)); }
    bool focus(HWND window) const { return carry(window, window::postFocus(window)); }
    bool key(HWND window, WORD virtualKey, bool shift, bool control, bool alt) const
    {
        return carry(window, window::postKey(window, virtualKey, shift, control, alt));
    }

private:
    bool carry(HWND window, bool taken) const
    {
        if (taken)
            settle_(window);
        return taken;
    }

    std::function<void(HWND)> settle_;
};

}  // namespace platform::qt

// user_input.h - posts the user's input to the window core.
//
// After each input that the window core has queued, the toolkit's thread waits a short time for the program's reaction
// and shows the result. So the next key goes to the window that has the focus after the reaction, even if the user
// types fast.
#pragma once

#include "controls/date_display.h"
#include "tree_control/tree_display.h"
#include "window/display.h"

#include <functional>
#include <string>
#include <utility>

namespace platform::qt {

class UserInput {
public:
    // `posted` is called after each input that the window core has queued.
    explicit UserInput(std::function<void()> posted) : posted_(std::move(posted)) {}

    // Each of the following functions posts one input with the window::post... function of a similar name. The result
    // is false if the window core dropped the input, for example because the program is busy or the window is disabled.
    bool click(HWND window, long row = -1) const { return report(window::postClick(window, row)); }
    bool doubleClick(HWND window, long row) const { return report(window::postDoubleClick(window, row)); }
    bool newText(HWND edit, std::u16string text) const { return report(window::postNewText(edit, std::move(text))); }
    bool typedText(HWND window, std::u16string text) const { return report(window::postText(window, std::move(text))); }
    bool date(HWND picker, const SYSTEMTIME& date) const { return report(window::postDate(picker, date)); }
    bool treeClick(HWND tree, HTREEITEM item, window::TreePart part) const
    {
        return report(window::postTreeClick(tree, item, part));
    }
    bool treeDoubleClick(HWND tree, HTREEITEM item, window::TreePart part) const
    {
        return report(window::postTreeDoubleClick(tree, item, part));
    }
    bool treeCommand(HWND tree, HTREEITEM item, WORD command) const
    {
        return report(window::postTreeCommand(tree, item, command));
    }
    bool treeKey(HWND tree, HTREEITEM item, WORD virtualKey) const
    {
        return report(window::postTreeKey(tree, item, virtualKey));
    }
    bool answerToAll(HWND box, int id) const { return report(window::postAnswerToAll(box, id)); }
    bool stopJob(HWND box, bool closesOwner) const { return report(window::postStopJob(box, closesOwner)); }
    bool close(HWND top) const { return report(window::postClose(top)); }
    bool captionOk(HWND top) const { return report(window::postCaptionOk(top)); }
    bool command(HWND top, WORD id) const { return report(window::postCommand(top, id)); }
    bool focus(HWND window) const { return report(window::postFocus(window)); }
    bool key(HWND window, WORD virtualKey, bool shift, bool control, bool alt) const
    {
        return report(window::postKey(window, virtualKey, shift, control, alt));
    }

private:
    bool report(bool taken) const
    {
        if (taken)
            posted_();
        return taken;
    }

    std::function<void()> posted_;
};

}  // namespace platform::qt

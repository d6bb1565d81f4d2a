// view.h - the base class of the views. A view is a widget that shows a window of the window core.
//
// A view posts the user's input to the window core. The view's content changes when the window core reports a change or
// followRun() is called. Edits and date pickers also change while the user edits them. Views are used only on the
// toolkit's thread.
#pragma once

#include "change_batch.h"
#include "run_view.h"
#include "shown_text.h"
#include "user_input.h"
#include "window/display.h"

#include <QRect>
#include <QString>
#include <QWidget>

namespace platform::qt {

class View {
public:
    View(HWND window, const UserInput& input) : window_(window), input_(input) {}
    virtual ~View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    HWND window() const { return window_; }
    virtual QWidget& widget() = 0;

    // Shows `state`. `changes` says what may have changed since the last call.
    virtual void follow(const window::WindowState& state, Changes changes) = 0;
    // Shows how far a run has come. Called a few times a second while the run is underway.
    virtual void followRun(const RunView& run) { static_cast<void>(run); }

    // Returns the width in pixels that the text needs in one row, or 0 if any width is enough.
    virtual int leastWidth() const { return 0; }
    // Returns the width in pixels that the view needs to show its whole content, or 0 if any width is enough. If
    // possible, the dialog is so wide when it opens that the view gets this width.
    virtual int wantedWidth() { return 0; }
    // Returns the geometry of the widget. `rect` is the control's rectangle in the template, scaled to the desktop.
    // Both rectangles are in pixels, relative to the dialog's content.
    virtual QRect geometryIn(const QRect& rect) const { return rect; }
    // Returns the distance in pixels from the widget's top to the middle of its text. Returns -1 if the widget doesn't
    // have exactly one row of text.
    virtual int rowMiddle() const { return -1; }
    // Returns a text that can be the name of a control to the right of this view or below it.
    virtual QString label() const { return {}; }

protected:
    const UserInput& input() const { return input_; }

private:
    HWND window_;
    const UserInput& input_;
};

}  // namespace platform::qt

// view.h - a widget that shows a window of the core.
//
// A view decides nothing. It posts the user's input to the core, and changes only when the core reports a change. Used
// only on the toolkit's thread.
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

    // Shows `state`. `changes`: what may have changed since the last call.
    virtual void follow(const window::WindowState& state, Changes changes) = 0;
    // Shows how far a run has come. Called a few times a second while it is underway.
    virtual void followRun(const RunView& run) { static_cast<void>(run); }

    // The width in pixels that the text needs in one row; 0 if any width is enough.
    virtual int leastWidth() const { return 0; }
    // The width in pixels that it needs to show everything, if the dialog can give it so much; 0: any width.
    virtual int wantedWidth() { return 0; }
    // The widget's geometry in the rectangle that the dialog template gives it, both in pixels of the dialog's content.
    virtual QRect geometryIn(const QRect& rect) const { return rect; }
    // The distance in pixels from the widget's top to the middle of its one row of text; -1 if it has no such row.
    virtual int rowMiddle() const { return -1; }
    // A text that can name a control beside or below it.
    virtual QString label() const { return {}; }

protected:
    const UserInput& input() const { return input_; }

private:
    HWND window_;
    const UserInput& input_;
};

}  // namespace platform::qt

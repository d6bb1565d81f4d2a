// view.h - what a window of the core is on the desktop: a widget that follows it.
//
// A view decides nothing. What the user does to it goes to the core, and the widget changes when the core says
// so. The desktop's thread only.
#pragma once

#include "change_batch.h"
#include "courier.h"
#include "shown_text.h"
#include "window/display.h"

#include <QRect>
#include <QString>
#include <QWidget>

namespace platform::qt {

class View {
public:
    View(HWND window, const Courier& courier) : window_(window), courier_(courier) {}
    virtual ~View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    [[nodiscard]] HWND window() const { return window_; }
    [[nodiscard]] virtual QWidget& widget() = 0;

    // Brings the widget in line; `changes` says what may differ from the last time.
    virtual void follow(const window::WindowState& state, Changes changes) = 0;

    // Pixels that its text needs in one row; 0 if it gets along with any width.
    [[nodiscard]] virtual int leastWidth() const { return 0; }
    // Where in the place that the template gives it the widget stands.
    [[nodiscard]] virtual QRect placeIn(const QRect& place) const { return place; }
    // Where in its geometry its one row of text has its middle; -1 without such a row.
    [[nodiscard]] virtual int rowMiddle() const { return -1; }
    // A text that may stand beside another control to say what that is for.
    [[nodiscard]] virtual QString label() const { return {}; }

protected:
    [[nodiscard]] const Courier& courier() const { return courier_; }

private:
    HWND window_;
    const Courier& courier_;
};

}  // namespace platform::qt

// top_view.h - the base class of all views that show a top-level window of the window core.
#pragma once

#include "view.h"
#include "window/program_status.h"

namespace platform::qt {

class TopView : public View {
public:
    using View::View;

    // The parent widget of the controls.
    virtual QWidget& content() { return widget(); }
    // Returns true if the view makes the widgets of its controls itself. In that case no views are made for the
    // controls.
    virtual bool makesOwnControls() const { return false; }
    // Called in the order in which the window core created the controls.
    virtual void addControl(View& control, const window::WindowState& state) = 0;
    virtual void removeControl(View& control) = 0;
    // Called when a control of the window got or lost the focus.
    virtual void followFocus() {}
    virtual void followBands(HWND bands) { static_cast<void>(bands); }
    // followStatus() is called when the status that the program reports has changed. showOutcome() is called when a run
    // has ended.
    virtual void followStatus(const window::StatusState& status) { static_cast<void>(status); }
    virtual void showOutcome(const QString& outcome) { static_cast<void>(outcome); }
    // Returns true if the user has asked to close the window while the program was busy.
    virtual bool isToClose() const { return false; }

    // Lays the window out and shows it over its owner. Called once, when the controls exist.
    virtual void present() = 0;
    // Shows or removes the wait cursor.
    void setWaiting(bool waiting);
    void comeToFront();
};

// Moves the window to the middle of its owner, but inside the screen. If no owner is visible, moves the window to the
// middle of the screen.
void placeOverOwner(QWidget& window);

}  // namespace platform::qt

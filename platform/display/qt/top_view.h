// top_view.h - a top-level window of the core on the desktop.
#pragma once

#include "view.h"

namespace platform::qt {

class TopView : public View {
public:
    using View::View;

    // The widget that the controls stand in.
    [[nodiscard]] virtual QWidget& content() { return widget(); }
    // Made of its own widgets, whatever controls the core has for it.
    [[nodiscard]] virtual bool bringsItsControls() const { return false; }
    // Its controls, in the order in which the core made them.
    virtual void addControl(View& control, const window::WindowState& state) = 0;
    virtual void removeControl(View& control) = 0;
    // The keyboard has come to one of its controls or left one.
    virtual void followFocus() {}
    virtual void followBands(HWND bands) { static_cast<void>(bands); }

    // The first time on the screen: laid out, over its owner.
    virtual void present() = 0;
    // Shows that it takes no input for a while.
    void setWaiting(bool waiting);
    void comeToFront();
};

// Over the middle of its owner, inside of the screen.
void placeOverOwner(QWidget& window);

}  // namespace platform::qt

// screen.h - shows all windows of the window core on the desktop.
//
// The program's threads add changes to a batch. The toolkit's thread takes the batch one frame (16 ms) after the first
// change, or earlier if it has waited for the program's reaction to an input of the user. It reads the current state of
// the changed windows and updates their views. The functions of Screen must be called on the toolkit's thread.
#pragma once

#include "change_batch.h"
#include "run_watch.h"
#include "set_opener.h"
#include "top_view.h"
#include "user_input.h"

#include "start/window_module.h"

#include <QObject>
#include <QTimer>

#include <unordered_map>

namespace platform::qt {

class Screen final : public QObject {
public:
    // The new object is the display of the window core until its destruction.
    explicit Screen(display::HostServices host = {});
    ~Screen() override;

    // Shows all changes so far, without waiting for the end of the frame.
    void flush();

private:
    void showReaction();
    void openSet();
    void apply(const Changed& changed);
    void follow(View& view, const window::WindowState& state, Changes changes);
    void applyGlobal(Changes changes);
    void followFocusedEdit();
    void build(const window::WindowState& state);
    TopView* makeTop(const window::WindowState& state);
    void addControl(TopView& top, const window::WindowState& state);
    void remove(HWND window);
    void removeInside(const QWidget& top);
    void showCursor();
    bool programIsIdle() const;
    TopView* topOf(HWND window) const;

    ChangeBatch batch_;
    UserInput input_;
    display::HostServices host_;
    SetOpener setOpener_;
    QTimer frameTimer_;                      // runs while there are changes to show
    QTimer cursorTimer_;                     // runs for a short time after the program has become busy
    std::unordered_map<HWND, View*> views_;  // of top-level windows and controls; parents delete the widgets
    RunWatch::Tops tops_;
    RunWatch runWatch_;
    HWND main_ = nullptr;
    HWND focus_ = nullptr;  // gets the focus at the end of flush()
};

}  // namespace platform::qt

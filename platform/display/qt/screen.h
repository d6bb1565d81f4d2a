// screen.h - all windows of the core on the desktop.
//
// The core's threads note changes in a batch; this side takes the batch at the screen's rate, reads what the
// core holds by then and brings the widgets in line. Lives on the desktop's thread.
#pragma once

#include "change_batch.h"
#include "courier.h"
#include "top_view.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <unordered_map>

namespace platform::qt {

class Screen final : public QObject {
public:
    // Becomes the core's display, until it goes.
    Screen();
    ~Screen() override;

    // Shows what has changed so far.
    void flush();

private:
    void settle();
    void apply(const Changed& changed);
    void applyGlobal(Changes changes);
    void build(const window::WindowState& state);
    TopView* makeTop(const window::WindowState& state);
    void addControl(TopView& top, const window::WindowState& state);
    void retire(HWND window);
    void showWaiting();
    [[nodiscard]] bool programRests() const;
    [[nodiscard]] TopView* topOf(HWND window) const;

    ChangeBatch batch_;
    Courier courier_;
    QTimer frame_;
    QTimer patience_;
    std::unordered_map<HWND, View*> views_;  // tops and controls alike; the widgets own each other
    std::unordered_map<HWND, TopView*> tops_;
    HWND main_ = nullptr;
    HWND focus_ = nullptr;  // gets the keyboard at the end of the flush
};

}  // namespace platform::qt

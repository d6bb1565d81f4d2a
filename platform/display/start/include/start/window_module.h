// window_module.h - loads the window module, which shows the program's windows on the user's desktop.
//
// Only the module uses the toolkit, so a start without a window never loads the toolkit.
#pragma once

#include <functional>

namespace platform::display {

// Exit codes of a program with a window.
inline constexpr int WindowNoDesktop = 3;
inline constexpr int WindowDesktopLost = 5;  // 4 means that something was left out

// Runs `program` on a new thread and shows its windows until it returns. Call it on the process's first thread,
// which becomes the toolkit's. The result is that of `program`.
// WindowNoDesktop, with an explanation on stderr and without running `program`: the module can't be loaded, or no
// window can be opened.
// If the desktop disappears meanwhile, the current run is completed and each question is refused. The process then ends
// with WindowDesktopLost and an explanation on stderr.
[[nodiscard]] int runWithWindow(const std::function<int()>& program);

}  // namespace platform::display

// The module's entry point, with the contract of runWithWindow(). Only the module defines it, in
// display/qt/run_with_window.cpp. The program finds it by name.
extern "C" int quillboxRunWithWindow(const std::function<int()>* program);

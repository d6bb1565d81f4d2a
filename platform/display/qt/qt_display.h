// qt_display.h - the window module: the program's windows on the user's desktop.
//
// A module of its own, loaded by window_module.h only when a window is wanted: a start without a screen
// never maps the toolkit.
#pragma once

#include <functional>

// Shows what the program does until it ends; the program runs on a thread of its own, and the calling thread,
// which has to be the process's first, becomes the desktop's. The result is the program's.
// WindowNoDesktop, with a sentence on stderr and the program not started, if no window can be opened.
// If the desktop goes away meanwhile, a run in progress is brought to its end, each question is answered with
// the answer that refuses, and the process ends with WindowDesktopLost and a sentence on stderr.
extern "C" int quillboxRunWithWindow(const std::function<int()>* program);

inline constexpr int WindowNoDesktop = 3;
inline constexpr int WindowDesktopLost = 5;  // 4 is a script's, where something was left out

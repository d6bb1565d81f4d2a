// core_mutex.h - the one mutex of the window core.
//
// The mutex guards the windows, the queues, the timers and the data of each control. A function holds it for a look-up
// or a change, but never while a window procedure runs. Code that runs while the mutex is held must not block. Outside
// platform/window, only the functions of a Display need to obey this rule, because the window core calls them with the
// mutex held.
#pragma once

#include "kernel/mutex.h"

namespace platform::window {

extern kernel::Mutex coreMutex;

using Lock = kernel::MutexLock;

}  // namespace platform::window

// core_mutex.h - the one mutex of the window core.
//
// It guards the windows, the queues, the timers and what each control holds. It is held for a look-up or a change,
// never while a window procedure runs. What runs under it must not block: the only foreign code is Display::changed.
#pragma once

#include "kernel/mutex.h"

namespace platform::window {

extern kernel::Mutex coreMutex;

using Lock = kernel::MutexLock;

}  // namespace platform::window

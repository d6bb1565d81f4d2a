// core_mutex.h - the one mutex of the window core.
//
// It guards the windows, the queues, the timers and what each control holds. It is held for a look-up or a change,
// never while a window procedure runs. Code that runs under it must not block. The only such code outside the core is
// Display::changed.
#pragma once

#include "kernel/mutex.h"

namespace platform::window {

extern kernel::Mutex coreMutex;

using Lock = kernel::MutexLock;

}  // namespace platform::window

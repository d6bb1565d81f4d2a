// background_thread.h - starts a thread that works beside the thread of a run.
#pragma once

#include <csignal>
#include <thread>
#include <utility>

namespace platform::device {

// Starts a thread that blocks all signals. So the host delivers each signal to the thread of the run. The signal can
// interrupt that thread while it waits for an answer of the user.
template <class Function>
[[nodiscard]] std::thread startBackgroundThread(Function&& function)
{
    sigset_t all;
    sigset_t before;
    (void)sigfillset(&all);
    (void)pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(std::forward<Function>(function));
    (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace platform::device

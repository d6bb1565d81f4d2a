// background_thread.h - starts a thread that works while another thread performs a run (a backup or a restore).
#pragma once

#include <csignal>
#include <thread>
#include <utility>

namespace platform::device {

// Starts a thread that blocks all signals, so the kernel delivers no signal to it. A signal must reach the thread of
// the run, because there it also interrupts the wait for an answer of the user.
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

// background_thread.h - a thread beside the run's thread.
#pragma once

#include <csignal>
#include <thread>
#include <utility>

namespace platform::device {

// Starts a thread that gets no signals. The thread of the run must get them, because one has to interrupt its question.
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

// second_thread.h - a thread that works beside the run's thread while there is work, and sleeps otherwise.
//
// All calls on the run's thread.
#pragma once

#include "ce/types.h"

#include <atomic>

struct SecondThread {
    bool (*work)();  // on the second thread: does a part of the work; false if there is nothing to do
    std::atomic<DWORD> calls;
    std::atomic<bool> sleeps;
    std::atomic<bool> stopping;
    std::atomic<bool> runs;
};

// Starts the thread, which calls work() until it is stopped. If no thread can be made, `runs` is false afterwards, and
// the other calls do nothing.
void StartSecondThread(SecondThread& thread, bool (*work)());

// Wakes the thread, also one that is about to sleep and still has `sleeps` false. What the run's thread wrote before is
// seen by the work() that follows.
void WakeSecondThread(SecondThread& thread);

// Lets the work() that has begun end, and waits until the thread has ended. Does nothing if it doesn't run.
void StopSecondThread(SecondThread& thread);

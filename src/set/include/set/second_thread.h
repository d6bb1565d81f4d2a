// second_thread.h - starts, wakes and stops a second thread. It works beside the run's thread, which is the thread that
// executes a backup or a restore. The second thread sleeps while there is no work.
//
// All calls are made on the run's thread.
#pragma once

#include "ce/types.h"

#include <atomic>

struct SecondThread {
    bool (*work)();  // called on the second thread: does a part of the work; returns false if there is nothing to do
    std::atomic<DWORD> calls;
    std::atomic<bool> sleeps;
    std::atomic<bool> stopping;
    std::atomic<bool> runs;
};

// Starts the second thread, which calls work() until it is stopped. If no thread can be made, `runs` is false
// afterwards, and the other calls have no effect.
void StartSecondThread(SecondThread& thread, bool (*work)());

// Wakes the second thread, even if it is about to sleep but hasn't set `sleeps`. In its next call of work() the second
// thread sees all data that the run's thread wrote before it called WakeSecondThread.
void WakeSecondThread(SecondThread& thread);

// Stops the second thread after its current call of work(), and waits until the thread has ended. Does nothing if the
// thread doesn't run.
void StopSecondThread(SecondThread& thread);

// turn.h - takes and gives up turns. A turn is the right to run on behalf of a thread (see core.h).
#pragma once

#include "window/core.h"

namespace platform::window {

// Gives up the thread's turn, so that other system threads can run on behalf of the thread.
void giveUpTurn(Thread& thread) REQUIRES(coreMutex);

// Takes a turn that was given up. `level` is the value that Thread::level (the number of visits in progress, see
// core.h) had before giveUpTurn. Waits until the turn is free and Thread::level has this value again. Then the visits
// that began in the meantime have ended.
void takeTurnBack(Thread& thread, unsigned level) REQUIRES(coreMutex);

// If sends from other threads wait for the turn of `self`, gives the turn up, waits until no such send is waiting any
// more, and takes the turn back. Each of these sends has then run, or has failed because its window was destroyed. The
// caller must hold the turn.
void letSendersIn(Thread& self) REQUIRES(coreMutex);

// Performs one visit (see core.h) to the thread that owns `window`, the receiving thread. `self` must be
// currentThread(). The constructor gives up the turn of `self`, and waits until it can take the turn of the receiving
// thread. After that, the caller runs on behalf of the receiving thread, and currentThread() returns that thread. The
// destructor gives the turn of the receiving thread up, and takes the turn of `self` back.
class Visit {
public:
    Visit(Thread& self, HWND window) REQUIRES(coreMutex);
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    ~Visit() REQUIRES(coreMutex);

    // The window whose procedure is to run. Null if the window was destroyed while the constructor waited for the turn.
    // In that case no visit has begun.
    const Window* receiver() const { return receiver_; }

private:
    void begin(HWND window) REQUIRES(coreMutex);
    void end() REQUIRES(coreMutex);

    Thread& self_;
    unsigned level_ = 0;  // Thread::level of `self_` when the constructor gave up the turn of `self_`
    Thread* visited_ = nullptr;
    const Window* receiver_ = nullptr;
};

}  // namespace platform::window

// turn.h - takes and gives up turns. A turn is the right to run in a thread's name (see core.h).
#pragma once

#include "window/core.h"

namespace platform::window {

// Lets other system threads run in the thread's name.
void giveUpTurn(Thread& thread) REQUIRES(coreMutex);

// Waits until the turn is free and Thread::level equals `level`, and then takes the turn. `level` is the value from
// before giveUpTurn, so the visits that began during the wait have ended.
void takeTurnBack(Thread& thread, unsigned level) REQUIRES(coreMutex);

// If sends wait for the thread's turn, gives the turn up until none is waiting. Each of these sends has then run, or
// has failed because its window was destroyed. The caller holds the turn before and after the call.
void letSendersIn(Thread& self) REQUIRES(coreMutex);

// As long as a Visit exists, the calling system thread runs in the name of the thread that owns `window`. `self` is the
// thread in whose name it ran before. The Visit gives up the turn of `self`, and its destructor takes that turn back.
class Visit {
public:
    Visit(Thread& self, HWND window) REQUIRES(coreMutex);
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    ~Visit() REQUIRES(coreMutex);

    // The window whose procedure is to run. Null if it was destroyed before its thread's turn was free.
    const Window* receiver() const { return receiver_; }

private:
    void begin(HWND window) REQUIRES(coreMutex);
    void end() REQUIRES(coreMutex);

    Thread& self_;
    unsigned level_ = 0;  // the level of `self_` when the visit began
    Thread* visited_ = nullptr;
    const Window* receiver_ = nullptr;
};

}  // namespace platform::window

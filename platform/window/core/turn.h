// turn.h - who runs in which thread's name. core.h explains turns.
#pragma once

#include "window/core.h"

namespace platform::window {

// Lets others run in the thread's name.
void giveUpTurn(Thread& thread) REQUIRES(coreMutex);

// Waits until the turn is free and all visits above `level` have ended, and takes it.
void takeTurnBack(Thread& thread, unsigned level) REQUIRES(coreMutex);

// Lets every send that waits for the thread run. The caller holds the turn before and after.
void letSendersIn(Thread& self) REQUIRES(coreMutex);

// Lets the calling system thread run in the name of the thread that owns a window, from construction to destruction.
// `self`, the thread in whose name it ran before, has no turn meanwhile.
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
    unsigned level_ = 0;  // of the frame that makes the visit
    Thread* visited_ = nullptr;
    const Window* receiver_ = nullptr;
};

}  // namespace platform::window

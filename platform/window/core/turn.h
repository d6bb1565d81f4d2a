// turn.h - who runs in which thread's name; core.h tells how.
#pragma once

#include "window/core.h"

namespace platform::window {

// All need the lock.

// Lets others run in the thread's name.
void giveUpTurn(Thread& thread);

// Waits until the thread's turn is free and the visits above `level` are over, and takes it.
void takeTurnBack(Lock& lock, Thread& thread, unsigned level);

// Waits for the turn of the window's thread, without holding it. Null if the window dies meanwhile.
[[nodiscard]] Window* waitForReceiver(Lock& lock, HWND window);

// Sends that wait for the thread go first; the caller holds its turn before and after.
void letSendersIn(Lock& lock, Thread& self);

// Waits on Core::turnFreed once.
void waitForTurns(Lock& lock);

// The calling system thread under another thread's name, from construction to destruction; the own
// turn is given up meanwhile. The lock is held at both ends.
class Visit {
public:
    Visit(Lock& lock, Thread& self, HWND window);
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    ~Visit();

    // The window to run; null if it died before its turn came.
    [[nodiscard]] const Window* receiver() const { return receiver_; }

private:
    Lock& lock_;
    Thread& self_;
    unsigned level_;
    Thread* visited_ = nullptr;
    const Window* receiver_ = nullptr;
};

}  // namespace platform::window

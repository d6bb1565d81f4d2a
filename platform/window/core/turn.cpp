// Who waits for what, and who wakes whom:
//
// - All waits for a turn are on Core::turnFreed. Whatever can end such a wait notifies all waiters: a turn is given up,
//   a send no longer waits, or a window is removed. Each waiter then checks its own condition again.
// - A frame that takes its turn back needs the turn free and no visit above it. Visits end in the reverse of their
//   order, so only one frame of a thread can have the current level.
// - A send needs the turn free and no frame of the receiver that is ready to continue (Thread::waitingLevel), so a
//   ready frame runs before the sends. In return letSendersIn, which each call of GetMessageW begins with, lets the
//   waiting sends run before the next message. Without the first rule a stream of sends would stop the thread's queue.
//   Without the second one a full queue would stop the sends.
// - No frame holds a turn while it waits for one, so waits can't form a cycle.
#include "turn.h"

#include <algorithm>

namespace platform::window {

namespace {

// Removes the thread's windows when the system thread ends. No procedure runs any more.
void endThread(Thread& thread)
{
    const Lock lock(coreMutex);
    Core& all = core();
    const std::vector<HWND> tops = all.topLevel;
    for (const HWND top : tops) {
        Window* window = findWindow(top);
        if (window && window->thread == &thread)
            removeWindow(*window);
    }
    // Other threads destroy what these windows owned on them.
    for (const HWND top : tops) {
        Window* window = findWindow(top);
        if (window && window->owner && !findWindow(window->owner) &&
            std::ranges::find(tops, window->owner) != tops.end())
            destroyLater(*window);
    }
    if (thread.cursor && --all.waitCursors == 0)
        announceGlobal(Change::Cursor);
}

struct ThreadRecord {
    ThreadRecord() REQUIRES(coreMutex) { own.id = ++core().threadsSoFar; }
    ThreadRecord(const ThreadRecord&) = delete;
    ThreadRecord& operator=(const ThreadRecord&) = delete;
    ~ThreadRecord() { endThread(own); }

    Thread own;
    Thread* current = &own;
};

// Made at the thread's first call.
ThreadRecord& threadRecord() REQUIRES(coreMutex)
{
    thread_local ThreadRecord record;
    return record;
}

void waitForTurns() REQUIRES(coreMutex)
{
    ++core().turnWaiters;
    core().turnFreed.wait(coreMutex);
    --core().turnWaiters;
}

bool isFreeForSends(const Thread& thread) REQUIRES(coreMutex)
{
    return !thread.turnTaken && thread.waitingLevel != thread.level;
}

// Waits for the turn of the window's thread. Null if the window is destroyed meanwhile.
Window* waitForReceiver(HWND window) REQUIRES(coreMutex)
{
    Window* found = findWindow(window);
    if (found && !isFreeForSends(*found->thread)) {
        std::vector<HWND>& waiting = core().waitingSends;
        waiting.push_back(window);
        while (found && !isFreeForSends(*found->thread)) {
            waitForTurns();
            found = findWindow(window);
        }
        waiting.erase(std::ranges::find(waiting, window));
        wakeTurnWaiters();  // letSendersIn waits until no send for its thread is left
    }
    return found;
}

bool hasWaitingSend(const Thread& thread) REQUIRES(coreMutex)
{
    return std::ranges::any_of(core().waitingSends, [&thread](HWND window) REQUIRES(coreMutex) {
        const Window* found = findWindow(window);
        return found && found->thread == &thread;
    });
}

}  // namespace

Thread& currentThread()
{
    return *threadRecord().current;
}

void giveUpTurn(Thread& thread)
{
    thread.turnTaken = false;
    wakeTurnWaiters();
}

void takeTurnBack(Thread& thread, unsigned level)
{
    while (thread.turnTaken || thread.level != level) {
        thread.waitingLevel = level;
        waitForTurns();
    }
    thread.turnTaken = true;
    thread.waitingLevel.reset();
}

void letSendersIn(Thread& self)
{
    if (!hasWaitingSend(self))
        return;
    const unsigned level = self.level;
    giveUpTurn(self);
    while (hasWaitingSend(self))
        waitForTurns();
    takeTurnBack(self, level);
}

Visit::Visit(Thread& self, HWND window) : self_(self)
{
    begin(window);
}

Visit::~Visit()
{
    end();
}

void Visit::begin(HWND window)
{
    level_ = self_.level;
    giveUpTurn(self_);
    receiver_ = waitForReceiver(window);
    if (!receiver_)
        return;
    visited_ = receiver_->thread;
    visited_->turnTaken = true;
    ++visited_->level;
    threadRecord().current = visited_;
}

void Visit::end()
{
    if (visited_) {
        threadRecord().current = &self_;
        --visited_->level;
        giveUpTurn(*visited_);
    }
    takeTurnBack(self_, level_);
}

}  // namespace platform::window

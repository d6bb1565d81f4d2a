// Implements turns and visits, which core.h explains. These rules say who waits for a turn, and who wakes the waiters:
//
// - All waits for a turn use Core::turnFreed. All waiters are notified when a turn is given up, a send stops waiting
//   for a turn, or a window is removed. Each waiter then checks its own condition again.
// - A call that gave a turn up can take it back when the turn is free and the visits that began during the call's wait
//   have ended. Then Thread::level has the same value as when the call gave the turn up. Several calls can wait to take
//   the same turn back. Each later call was made in a visit that began while the earlier calls waited. So each of these
//   calls waits for a different level, and at most one of them can continue at a time.
// - A send can begin a visit when the receiver's turn is free and no other call goes first. A call that waits to take
//   this turn back goes first if the visits that began during its wait have ended (see Thread::waitingLevel). Without
//   this rule an endless series of sends would block the thread's queue.
// - Each call of GetMessageW begins with letSendersIn, so the waiting sends run before the next message. Without this
//   rule a queue that is never empty would block the sends.
// - No call holds a turn while it waits for another turn, so waits can't form a cycle.
#include "turn.h"

#include <algorithm>

namespace platform::window {

namespace {

// Called at the end of the system thread to which `thread` belongs. Removes the windows of `thread` without calling
// their procedures.
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
    // The removed windows may own windows of other threads. Those threads destroy the owned windows.
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

// Can a send from another thread begin to run on behalf of `thread` now? (See the rules at the top of this file.)
bool isFreeForSends(const Thread& thread) REQUIRES(coreMutex)
{
    return !thread.turnTaken && thread.waitingLevel != thread.level;
}

// Waits until a send can begin to run on behalf of the window's thread (isFreeForSends). Returns the window, or null if
// it is destroyed before that.
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
        wakeTurnWaiters();  // letSendersIn may be waiting for this send to leave the list
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

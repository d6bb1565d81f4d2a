// Turns, and the record that each thread has as long as it lives.
#include "turn.h"

#include <algorithm>

namespace platform::window {

namespace {

// Takes the thread's windows down when the system thread ends. No procedure runs any more.
void endThread(Thread& thread)
{
    const Lock lock = lockCore();
    Core& all = core();
    const std::vector<HWND> tops = all.topLevel;
    for (const HWND top : tops) {
        Window* window = findWindow(top);
        if (window && window->thread == &thread)
            removeWindow(*window);
    }
    // What these windows owned on other threads goes too, in those threads' name.
    for (const HWND top : tops) {
        Window* window = findWindow(top);
        if (window && window->owner && !findWindow(window->owner) &&
            std::ranges::find(tops, window->owner) != tops.end())
            condemn(*window);
    }
    if (thread.cursor && --all.waitCursors == 0)
        announceGlobal(Change::Cursor);
}

struct ThreadRecord {
    ThreadRecord() { own.id = ++core().threadsSoFar; }
    ThreadRecord(const ThreadRecord&) = delete;
    ThreadRecord& operator=(const ThreadRecord&) = delete;
    ~ThreadRecord() { endThread(own); }

    Thread own;
    Thread* current = &own;
};

// Made at the thread's first call, under the lock.
ThreadRecord& threadRecord()
{
    thread_local ThreadRecord record;
    return record;
}

}  // namespace

Thread& currentThread()
{
    return *threadRecord().current;
}

void waitForTurns(Lock& lock)
{
    ++core().turnWaiters;
    core().turnFreed.wait(lock);
    --core().turnWaiters;
}

void giveUpTurn(Thread& thread)
{
    thread.turnTaken = false;
    wakeTurnWaiters();
}

void takeTurnBack(Lock& lock, Thread& thread, unsigned level)
{
    while (thread.turnTaken || thread.level != level) {
        thread.owedTo = level;
        waitForTurns(lock);
    }
    thread.turnTaken = true;
    thread.owedTo.reset();
}

namespace {

bool isFree(const Thread& thread)
{
    return !thread.turnTaken && thread.owedTo != thread.level;
}

}  // namespace

Window* waitForReceiver(Lock& lock, HWND window)
{
    Window* found = findWindow(window);
    if (found && !isFree(*found->thread)) {
        Core& all = core();
        all.waitingSends.push_back(window);
        while (found && !isFree(*found->thread)) {
            waitForTurns(lock);
            found = findWindow(window);
        }
        all.waitingSends.erase(std::ranges::find(all.waitingSends, window));
        wakeTurnWaiters();  // letSendersIn counts
    }
    return found;
}

void letSendersIn(Lock& lock, Thread& self)
{
    const auto forSelf = [&self](HWND window) {
        const Window* found = findWindow(window);
        return found && found->thread == &self;
    };
    if (std::ranges::none_of(core().waitingSends, forSelf))
        return;
    const unsigned level = self.level;
    giveUpTurn(self);
    while (std::ranges::any_of(core().waitingSends, forSelf))
        waitForTurns(lock);
    takeTurnBack(lock, self, level);
}

Visit::Visit(Lock& lock, Thread& self, HWND window) : lock_(lock), self_(self), level_(self.level)
{
    giveUpTurn(self);
    receiver_ = waitForReceiver(lock, window);
    if (!receiver_)
        return;
    visited_ = receiver_->thread;
    visited_->turnTaken = true;
    ++visited_->level;
    threadRecord().current = visited_;
}

Visit::~Visit()
{
    if (visited_) {
        threadRecord().current = &self_;
        --visited_->level;
        giveUpTurn(*visited_);
    }
    takeTurnBack(lock_, self_, level_);
}

}  // namespace platform::window

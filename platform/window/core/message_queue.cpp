// Implements the message queues and timers of threads. GetMessageW returns posted messages first, then input, WM_QUIT,
// and messages of timers that are due. It takes them from the queues of currentThread(). Any thread may add to the
// queues. See core.h for the terms turn and visit.
//
// GetMessageW holds the mutex except while it waits or destroys windows. Its loop relies on these facts:
//
// - A waiting call of GetMessageW continues when a timer is due or when noteArrival is called. The functions that queue
//   messages and input call noteArrival, and so do PostQuitMessage, SetTimer, EnableWindow, removeWindow and
//   destroyLater. noteArrival increments Thread::arrivals and wakes the waiting calls. A call reads this counter before
//   it gives the turn up, so it misses no later arrival.
// - Several calls of GetMessageW can wait for messages of the same thread: one on the thread's own system thread, and
//   one in each visit that has a message loop. An arrival wakes all of them. The call in the visit that began last
//   takes the turn back first. Each other call was waiting already when later visits began, and can take the turn back
//   only after all those visits have ended.
// - The turn is free during the wait, so sends to the thread's windows can run. After the wait the call takes the turn
//   back before it reads a queue.
#include "turn.h"
#include "window/core.h"
#include "window/input.h"
#include "window/window_life.h"

#include <algorithm>

using namespace platform::window;

namespace {

// Which messages a caller of GetMessageW accepts.
struct Filter {
    HWND window;
    UINT low;
    UINT high;

    bool takes(HWND target, UINT message) const REQUIRES(coreMutex)
    {
        if ((low != 0 || high != 0) && (message < low || message > high))
            return false;
        if (!window || target == window)
            return true;
        const Window* top = findWindow(window);
        const Window* found = findWindow(target);
        return top && found && isWithin(*found, *top);
    }
};

DWORD ticks()
{
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;
    return static_cast<DWORD>(duration_cast<milliseconds>(Clock::now().time_since_epoch()).count());
}

bool takePosted(Thread& self, const Filter& filter, MSG& message) REQUIRES(coreMutex)
{
    const auto found = std::ranges::find_if(self.posted, [&filter](const MSG& posted) REQUIRES(coreMutex) {
        return filter.takes(posted.hwnd, posted.message);
    });
    if (found == self.posted.end())
        return false;
    message = *found;
    self.posted.erase(found);
    return true;
}

bool takeInput(Thread& self, const Filter& filter, MSG& message) REQUIRES(coreMutex)
{
    std::erase_if(self.input, isToBeDropped);
    const auto found = std::ranges::find_if(self.input, [&filter](const Input& input) REQUIRES(coreMutex) {
        return isDeliverable(input) && filter.takes(input.message.hwnd, input.message.message);
    });
    if (found == self.input.end())
        return false;
    message = found->message;
    self.arrivedText = std::move(found->text);
    self.input.erase(found);
    return true;
}

bool takeQuit(Thread& self, MSG& message) REQUIRES(coreMutex)
{
    if (!self.quit)
        return false;
    self.quit = false;
    message = MSG{.hwnd = nullptr,
                  .message = WM_QUIT,
                  .wParam = static_cast<WPARAM>(self.exitCode),
                  .lParam = 0,
                  .time = ticks(),
                  .pt = {}};
    return true;
}

Timer* nextTimer(Thread& self, const Filter& filter) REQUIRES(coreMutex)
{
    Timer* next = nullptr;
    for (Timer& timer : self.timers) {
        if (filter.takes(timer.window, WM_TIMER) && (!next || timer.due < next->due))
            next = &timer;
    }
    return next;
}

// WM_TIMER is created only when it is retrieved. So a thread that was busy for several periods of a timer gets one
// message.
bool takeTimer(Thread& self, const Filter& filter, MSG& message) REQUIRES(coreMutex)
{
    Timer* timer = nextTimer(self, filter);
    const Clock::time_point now = Clock::now();
    if (!timer || timer->due > now)
        return false;
    timer->due = now + timer->period;
    message = MSG{timer->window, WM_TIMER, timer->id, 0, ticks(), {}};
    return true;
}

bool isForEdit(const MSG& message) REQUIRES(coreMutex)
{
    const Window* target = findWindow(message.hwnd);
    return target && target->state->editsText();
}

// Can the handling of the message take long? Returns false for a timer's message, for text typed into an edit, and for
// most keys pressed in an edit. The exceptions are Enter, Esc and keys with Alt. They and all other messages may start
// a backup or other long work. For example, a space typed on a button presses the button.
bool mayTakeLong(const MSG& message) REQUIRES(coreMutex)
{
    switch (message.message) {
    case WM_TIMER:
        return false;
    case WM_KEYDOWN:
        return message.wParam == VK_RETURN || message.wParam == VK_ESCAPE || !isForEdit(message);
    case WM_CHAR:
    case InputText:
    case InputNewText:
        return !isForEdit(message);
    default:
        return true;
    }
}

bool takeNext(Thread& self, const Filter& filter, MSG& message) REQUIRES(coreMutex)
{
    if (!takePosted(self, filter, message) && !takeInput(self, filter, message) && !takeQuit(self, message) &&
        !takeTimer(self, filter, message))
        return false;
    self.inCommand = mayTakeLong(message);
    return true;
}

// Waits until `arrivals` differs from `seen` or a timer is due. The caller must have given up the turn of `self`. When
// the wait ends, another system thread may hold the turn.
void waitWithoutTurn(Thread& self, const Filter& filter, std::uint64_t seen) REQUIRES(coreMutex)
{
    while (self.arrivals == seen) {
        const Timer* timer = nextTimer(self, filter);
        if (!timer) {
            self.arrived.wait(coreMutex);
        } else if (timer->due <= Clock::now()) {
            return;
        } else {
            // The time is copied, because the wait unlocks the mutex. During the wait another thread may kill the timer
            // or make the vector reallocate.
            const Clock::time_point due = timer->due;
            self.arrived.waitUntil(coreMutex, due);
        }
    }
}

// Gives up the turn of `self`, so that sends from other threads can run. Waits until something arrives or a timer is
// due, and then takes the turn back.
void waitForArrival(Thread& self, const Filter& filter) REQUIRES(coreMutex)
{
    const unsigned level = self.level;
    const std::uint64_t seen = self.arrivals;
    giveUpTurn(self);
    ++self.retrieving;
    announceGlobal(Change::Idle);
    waitWithoutTurn(self, filter, seen);
    takeTurnBack(self, level);
    --self.retrieving;
    announceGlobal(Change::Busy);
}

}  // namespace

BOOL GetMessageW(MSG* message, HWND window, UINT low, UINT high)
{
    if (!message) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    const Lock lock(coreMutex);
    Thread& self = currentThread();
    const Filter filter{window, low, high};
    letSendersIn(self);
    for (;;) {
        destroyPending(self);
        if (window && !findWindow(window)) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return -1;
        }
        if (takeNext(self, filter, *message))
            return message->message != WM_QUIT;
        waitForArrival(self, filter);
    }
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Lock lock(coreMutex);
    const Window* receiver = findWindow(window);
    if (!receiver)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    receiver->thread->posted.push_back({window, message, wParam, lParam, ticks(), {}});
    noteArrival(*receiver->thread);
    return TRUE;
}

void PostQuitMessage(int exitCode)
{
    const Lock lock(coreMutex);
    Thread& self = currentThread();
    self.quit = true;
    self.exitCode = exitCode;
    noteArrival(self);
}

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, void* procedure)
{
    if (procedure)
        return static_cast<UINT_PTR>(fail(ERROR_INVALID_PARAMETER));
    const Lock lock(coreMutex);
    const Window* owner = findWindow(window);
    if (!owner)
        return static_cast<UINT_PTR>(fail(ERROR_INVALID_WINDOW_HANDLE));
    const auto period = std::chrono::milliseconds(std::max(milliseconds, UINT{1}));
    std::vector<Timer>& timers = owner->thread->timers;
    std::erase_if(timers, [&](const Timer& timer) { return timer.window == window && timer.id == id; });
    timers.push_back({window, id, period, Clock::now() + period});
    noteArrival(*owner->thread);
    return id != 0 ? id : 1;
}

BOOL KillTimer(HWND window, UINT_PTR id)
{
    const Lock lock(coreMutex);
    Window* owner = findWindow(window);
    if (!owner)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const auto gone = std::erase_if(owner->thread->timers,
                                    [&](const Timer& timer) { return timer.window == window && timer.id == id; });
    return gone > 0 ? TRUE : fail(ERROR_INVALID_PARAMETER);
}

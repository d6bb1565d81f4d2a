// Each thread's queue: what is posted to its windows, their input, their timers, the wish to quit.
#include "turn.h"
#include "window/core.h"
#include "window/input.h"
#include "window/window_life.h"

#include <algorithm>
#include <limits>

using namespace platform::window;

namespace {

// Which messages a caller of GetMessageW wants.
struct Filter {
    HWND window;
    UINT low;
    UINT high;

    [[nodiscard]] bool takes(HWND target, UINT message) const
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

bool takePosted(Thread& self, const Filter& filter, MSG& message)
{
    const auto found = std::ranges::find_if(
        self.posted, [&filter](const MSG& posted) { return filter.takes(posted.hwnd, posted.message); });
    if (found == self.posted.end())
        return false;
    message = *found;
    self.posted.erase(found);
    return true;
}

bool takeInput(Thread& self, const Filter& filter, MSG& message)
{
    std::erase_if(self.input, isToBeDropped);
    const auto found = std::ranges::find_if(self.input, [&filter](const Input& input) {
        return isDeliverable(input) && filter.takes(input.message.hwnd, input.message.message);
    });
    if (found == self.input.end())
        return false;
    message = found->message;
    self.arrivedText = std::move(found->text);
    self.input.erase(found);
    return true;
}

bool takeQuit(Thread& self, MSG& message)
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

Timer* nextTimer(Thread& self, const Filter& filter)
{
    Timer* next = nullptr;
    for (Timer& timer : self.timers)
        if (filter.takes(timer.window, WM_TIMER) && (!next || timer.due < next->due))
            next = &timer;
    return next;
}

// Made on demand: however long the thread was busy, the ticks that it missed are one.
bool takeTimer(Thread& self, const Filter& filter, MSG& message)
{
    Timer* timer = nextTimer(self, filter);
    const Clock::time_point now = Clock::now();
    if (!timer || timer->due > now)
        return false;
    timer->due = now + timer->period;
    message = MSG{timer->window, WM_TIMER, timer->id, 0, ticks(), {}};
    return true;
}

bool isForEdit(const MSG& message)
{
    const Window* target = findWindow(message.hwnd);
    return target && target->state->editsText();
}

// A character typed into an edit and a tick are over soon; what else is handled may be a run. The same
// letter on a button presses it.
bool mayTakeLong(const MSG& message)
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

bool takeNext(Thread& self, const Filter& filter, MSG& message)
{
    if (!takePosted(self, filter, message) && !takeInput(self, filter, message) && !takeQuit(self, message) &&
        !takeTimer(self, filter, message))
        return false;
    self.inCommand = mayTakeLong(message);
    return true;
}

// Waits for news or a timer that is due, without looking at whose turn it is.
void waitWithoutTurn(Lock& lock, Thread& self, const Filter& filter, std::uint64_t seen)
{
    while (self.news == seen) {
        const Timer* timer = nextTimer(self, filter);
        if (!timer) {
            self.newsCame.wait(lock);
        } else if (timer->due <= Clock::now()) {
            return;
        } else {
            // A copy: the timer may be killed, or its vector move, while nobody holds the lock.
            const Clock::time_point due = timer->due;
            self.newsCame.wait_until(lock, due);
        }
    }
}

// Gives the turn up until there is news or a timer is due, and holds it again at the end.
void waitForNews(Lock& lock, Thread& self, const Filter& filter)
{
    const unsigned level = self.level;
    const std::uint64_t seen = self.news;
    giveUpTurn(self);
    ++self.retrieving;
    announceGlobal(Change::Idle);
    waitWithoutTurn(lock, self, filter, seen);
    takeTurnBack(lock, self, level);
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
    Lock lock = lockCore();
    Thread& self = currentThread();
    const Filter filter{window, low, high};
    letSendersIn(lock, self);
    for (;;) {
        destroyCondemned(lock, self);
        if (window && !findWindow(window)) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return -1;
        }
        if (takeNext(self, filter, *message))
            return message->message != WM_QUIT;
        waitForNews(lock, self, filter);
    }
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Lock lock = lockCore();
    const Window* receiver = findWindow(window);
    if (!receiver)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    receiver->thread->posted.push_back({window, message, wParam, lParam, ticks(), {}});
    tell(*receiver->thread);
    return TRUE;
}

void PostQuitMessage(int exitCode)
{
    const Lock lock = lockCore();
    Thread& self = currentThread();
    self.quit = true;
    self.exitCode = exitCode;
    tell(self);
}

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, void* procedure)
{
    if (procedure)
        return static_cast<UINT_PTR>(fail(ERROR_INVALID_PARAMETER));
    const Lock lock = lockCore();
    const Window* owner = findWindow(window);
    if (!owner)
        return static_cast<UINT_PTR>(fail(ERROR_INVALID_WINDOW_HANDLE));
    const auto period = std::chrono::milliseconds(std::max(milliseconds, UINT{1}));
    std::vector<Timer>& timers = owner->thread->timers;
    std::erase_if(timers, [&](const Timer& timer) { return timer.window == window && timer.id == id; });
    timers.push_back({window, id, period, Clock::now() + period});
    tell(*owner->thread);
    return id != 0 ? id : 1;
}

BOOL KillTimer(HWND window, UINT_PTR id)
{
    const Lock lock = lockCore();
    Window* owner = findWindow(window);
    if (!owner)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const auto gone = std::erase_if(owner->thread->timers,
                                    [&](const Timer& timer) { return timer.window == window && timer.id == id; });
    return gone > 0 ? TRUE : fail(ERROR_INVALID_PARAMETER);
}

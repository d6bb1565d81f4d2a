// core.h - the window core's data about windows and threads.
//
// coreMutex (core_mutex.h) guards all of this data. It is unlocked while a window procedure runs, and the procedure can
// destroy windows. So a pointer to a Window can be invalid after each unlock. Store the handle instead, and look the
// window up again.
//
// In these files, a *thread* is a Thread, which owns windows and message queues. A *system thread* executes code. Each
// system thread that uses windows has a Thread of its own. A window procedure always runs on behalf of the thread that
// owns the window. If another thread sends the message, the procedure runs on the sender's system thread, so no switch
// between system threads is needed. Such a run is a *visit* to the receiving thread (turn.h).
//
// A thread's *turn* is the right to run on behalf of the thread. Only one system thread at a time can hold it. The turn
// isn't a lock. Its state is in the fields of Thread, and these rules apply:
//
// - A system thread holds the turn of its own Thread from its first call of a window function on. It gives this turn up
//   while it waits in GetMessageW, and during each send to a window of another thread.
// - A visit begins when the send has taken the turn of the receiving thread. The send takes it as soon as the turn is
//   free, unless a call that waits to take the turn back goes first (see Thread::waitingLevel). After the window
//   procedure has returned, the send gives the turn up, and the visit ends.
// - A system thread holds at most one turn, and none while it waits for a turn or for messages. So two threads that
//   send to each other don't block each other, and a receiver can send back to its sender.
// - A procedure that runs in a visit can give the turn up too, because it can send or wait for messages. Then another
//   visit to the same thread can begin. So visits nest. Thread::level is the number of visits to the thread that are in
//   progress. A call of GetMessageW or SendMessageW that has given the turn up takes it back only after the visits that
//   began in the meantime have ended. A message loop inside a visit retrieves messages from the queues of the receiving
//   thread.
#pragma once

#include "kernel/slot_table.h"
#include "window/class_state.h"
#include "window/core_mutex.h"
#include "window/display.h"
#include "window/program_status.h"

#include "ce/window.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform::window {

using Clock = std::chrono::steady_clock;

// Input of the user that the window's thread hasn't retrieved yet.
struct Input {
    MSG message{};
    std::u16string text;  // only with InputText and InputNewText
};

struct Timer {
    HWND window;
    UINT_PTR id;
    Clock::duration period;
    Clock::time_point due;
};

// The window core's data about one thread. Exists until the system thread ends.
struct Thread {
    std::uint64_t id GUARDED_BY(coreMutex) = 0;

    bool turnTaken GUARDED_BY(coreMutex) = true;
    unsigned level GUARDED_BY(coreMutex) = 0;  // visits to this thread that are in progress
    // Each call that waits to take the turn of this thread back (see the top of this file) checks whether it can
    // continue. If it can't, it sets waitingLevel to the value that `level` had when the call gave the turn up. The
    // call that takes the turn back resets waitingLevel. If waitingLevel equals the current `level`, the call that set
    // waitingLevel goes first, because all visits that began during its wait have ended. Sends from other threads then
    // wait until this call has taken the turn. Without this rule, a thread that receives sends without a pause would
    // never handle its posted messages.
    std::optional<unsigned> waitingLevel GUARDED_BY(coreMutex);

    std::deque<MSG> posted GUARDED_BY(coreMutex);
    std::deque<Input> input GUARDED_BY(coreMutex);
    std::vector<Timer> timers GUARDED_BY(coreMutex);
    // Windows of this thread whose owner window belonged to another thread and was destroyed. GetMessageW destroys
    // them.
    std::vector<HWND> toDestroy GUARDED_BY(coreMutex);
    bool quit GUARDED_BY(coreMutex) = false;
    int exitCode GUARDED_BY(coreMutex) = 0;
    std::u16string arrivedText GUARDED_BY(coreMutex);  // the text of the input message that was retrieved last

    // The number of calls of noteArrival for this thread. When the number has changed, a call that waits in GetMessageW
    // checks the queues again.
    std::uint64_t arrivals GUARDED_BY(coreMutex) = 0;
    kernel::Condition arrived GUARDED_BY(coreMutex);
    int retrieving GUARDED_BY(coreMutex) = 0;  // calls of GetMessageW that wait for messages of this thread
    // True if handling the message that was retrieved last may take long. If so, most input for the thread's windows is
    // dropped until the thread waits in GetMessageW again (see display.h).
    bool inCommand GUARDED_BY(coreMutex) = true;

    HWND focus GUARDED_BY(coreMutex) = nullptr;
    HWND active GUARDED_BY(coreMutex) = nullptr;  // top-level window
    HCURSOR cursor GUARDED_BY(coreMutex) = nullptr;
    POINT pointer GUARDED_BY(coreMutex){};  // the user's last click on a tree view, in screen coordinates
};

struct Window {
    HWND handle GUARDED_BY(coreMutex) = nullptr;
    Thread* thread GUARDED_BY(coreMutex) = nullptr;
    const WindowClass* windowClass GUARDED_BY(coreMutex) = nullptr;
    Window* parent GUARDED_BY(coreMutex) = nullptr;  // of a child
    HWND owner GUARDED_BY(coreMutex) =
        nullptr;  // of a top-level window; can belong to another thread or be destroyed already
    std::vector<Window*> children GUARDED_BY(coreMutex);
    int id GUARDED_BY(coreMutex) = 0;
    DWORD style GUARDED_BY(coreMutex) = 0;
    DWORD exStyle GUARDED_BY(coreMutex) = 0;
    RECT rectangle GUARDED_BY(coreMutex){};
    std::u16string text GUARDED_BY(coreMutex);
    WORD iconId GUARDED_BY(coreMutex) = 0;
    HWND lastFocus GUARDED_BY(coreMutex) = nullptr;  // of a top-level window: its control that had the focus last
    bool dying GUARDED_BY(coreMutex) = false;
    std::unique_ptr<ClassState> state GUARDED_BY(coreMutex) PT_GUARDED_BY(coreMutex);  // never null
};

struct Core {
    kernel::SlotTable<std::unique_ptr<Window>> windows GUARDED_BY(coreMutex);
    std::vector<HWND> topLevel GUARDED_BY(coreMutex);  // the frontmost window first
    std::deque<WindowClass> classes GUARDED_BY(coreMutex);
    std::uint64_t threadsSoFar GUARDED_BY(coreMutex) = 0;

    // All calls that wait for the turn of a thread (see the top of this file) wait here. They are notified when a turn
    // becomes free, when a send stops waiting for a turn, and when a window is removed. If no call waits for a turn,
    // the notification is skipped to save the system call.
    kernel::Condition turnFreed GUARDED_BY(coreMutex);
    int turnWaiters GUARDED_BY(coreMutex) = 0;
    std::vector<HWND> waitingSends GUARDED_BY(coreMutex);  // the receivers of the sends that wait for a turn

    Display* display GUARDED_BY(coreMutex) = nullptr;
    StatusState status GUARDED_BY(coreMutex);
    int waitCursors GUARDED_BY(coreMutex) = 0;
};

// The data is never destroyed, because a detached thread can use it after main() has returned.
Core& core();

// Returns the thread on whose behalf the calling system thread runs. This is the receiving thread during a visit (see
// above), and otherwise the system thread's own Thread.
Thread& currentThread() REQUIRES(coreMutex);

// Returns null if no window has this handle.
Window* findWindow(HWND handle) REQUIRES(coreMutex);

[[nodiscard]] Window& addWindow() REQUIRES(coreMutex);
// Hides the window from displays. The window's own thread destroys it in GetMessageW.
void destroyLater(Window& window) REQUIRES(coreMutex);
bool isToBeDestroyed(const Window& window) REQUIRES(coreMutex);
// Removes the window and its children from the table. Removes their timers and their queued messages and input too.
// Sends no message.
void removeWindow(Window& window) REQUIRES(coreMutex);

template <class State>
State& stateOf(const Window& window) REQUIRES(coreMutex)
{
    return static_cast<State&>(*window.state);
}

// Returns the state of the window. Returns null if the window doesn't exist or is of another kind.
template <class State>
State* findState(HWND handle, WindowKind kind) REQUIRES(coreMutex)
{
    const Window* window = findWindow(handle);
    return window && window->windowClass->kind == kind ? &stateOf<State>(*window) : nullptr;
}

// Returns the first child with that id, or null if there is none.
Window* findChild(const Window& parent, int id) REQUIRES(coreMutex);
bool isWithin(const Window& window, const Window& ancestor) REQUIRES(coreMutex);
Window& topLevelOf(Window& window) REQUIRES(coreMutex);
bool isVisible(const Window& window) REQUIRES(coreMutex);     // neither it nor an ancestor is hidden
bool takesInputOf(const Window& window) REQUIRES(coreMutex);  // neither it nor an ancestor is disabled
inline bool hasStyle(const Window& window, DWORD bits) REQUIRES(coreMutex)
{
    return (window.style & bits) == bits;
}

void announce(const Window& window, Change change) REQUIRES(coreMutex);
void announceGlobal(Change change) REQUIRES(coreMutex);

// Wakes the calls that wait in GetMessageW for this thread. Must be called after something was added to the thread's
// queues, and after any other event to which such a call must react, such as the removal of a window.
void noteArrival(Thread& thread) REQUIRES(coreMutex);

// Wakes all calls that wait for a thread's turn (see above). Each of them checks whether it can continue. Must be
// called after a turn became free, a send stopped waiting for a turn, or a window was removed.
void wakeTurnWaiters() REQUIRES(coreMutex);

// Sets the text and reports the change to the display. Reuses the old text's memory if the new text fits, so a counter
// that changes a million times allocates nothing.
void setText(Window& window, std::u16string_view text) REQUIRES(coreMutex);
// Reports the window's text to the display. Must be called after `text` was changed without setText.
void announceText(const Window& window) REQUIRES(coreMutex);

// Sets the last error and returns 0.
int fail(DWORD error);

}  // namespace platform::window

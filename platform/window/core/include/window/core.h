// core.h - the core's data about windows and threads.
//
// coreMutex (core_mutex.h) guards all of this data. It is unlocked while a window procedure runs, and the procedure can
// destroy windows. So a pointer to a Window can be invalid after each unlock. Store the handle instead, and look the
// window up again.
//
// A window procedure runs in the name of the thread that owns the window. The right to run in a thread's name is the
// thread's *turn*. Only one system thread at a time can hold it. The turn isn't a lock. Its state is in the fields of
// Thread, and these rules apply:
//
// - A thread holds its turn from its first call of a window function on. It gives the turn up while it waits in
//   GetMessageW, and during each send to a window of another thread.
// - A send to a window of another thread takes that thread's turn as soon as the turn is free. Then the window
//   procedure runs on the sender's system thread, in the name of the receiving thread. After that the send gives the
//   turn up. Such a send is a *visit* (turn.h). A visit needs no switch between system threads.
// - A system thread holds at most one turn, and none while it waits for a turn or for messages. So two threads that
//   send to each other don't block each other, and a receiver can send back to its sender.
// - A procedure that runs in a visit can wait, and then another visit to the same thread can begin. So visits nest.
//   Thread::level is the number of visits to the thread that are in progress. A call frame that waits for the turn or
//   for messages continues only after the visits that began during its wait have ended. A message loop inside a visit
//   retrieves messages from the queues of the receiving thread.
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

// The core's data about one thread. Lives as long as the system thread.
struct Thread {
    std::uint64_t id GUARDED_BY(coreMutex) = 0;

    bool turnTaken GUARDED_BY(coreMutex) = true;
    unsigned level GUARDED_BY(coreMutex) = 0;  // visits in progress
    // Set while a call frame waits to take the turn back: the value of `level` when the frame gave the turn up. If it
    // equals the current `level`, the frame needn't wait for the end of a visit. In that case sends from other threads
    // wait until the frame has taken the turn. Without this rule, a thread that receives sends without a pause would
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
    int retrieving GUARDED_BY(coreMutex) = 0;  // call frames that wait in GetMessageW
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

    // Notified when a turn becomes free, a send stops waiting or a window is removed. If no frame waits, the
    // notification is skipped to save the system call.
    kernel::Condition turnFreed GUARDED_BY(coreMutex);
    int turnWaiters GUARDED_BY(coreMutex) = 0;
    std::vector<HWND> waitingSends GUARDED_BY(coreMutex);  // the receivers of the sends that wait for a turn

    Display* display GUARDED_BY(coreMutex) = nullptr;
    StatusState status GUARDED_BY(coreMutex);
    int waitCursors GUARDED_BY(coreMutex) = 0;
};

// The data is never destroyed, because a detached thread can use it after main() has returned.
Core& core();

// The thread in whose name the calling system thread runs.
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

// Must be called when a turn became free, a send stopped waiting or a window was removed.
void wakeTurnWaiters() REQUIRES(coreMutex);

// Sets the text and reports the change to the display. Reuses the old text's memory if the new text fits, so a counter
// that changes a million times allocates nothing.
void setText(Window& window, std::u16string_view text) REQUIRES(coreMutex);
// Reports the window's text to the display. Must be called after `text` was changed without setText.
void announceText(const Window& window) REQUIRES(coreMutex);

// Sets the last error and returns 0.
int fail(DWORD error);

}  // namespace platform::window

// core.h - the windows and threads that the window core keeps.
//
// coreMutex (core_mutex.h) guards all of it. It is not held while a window procedure runs, so a pointer to a Window is
// dead after each unlock: keep the handle and look the window up again.
//
// A window procedure runs in the name of the thread that owns the window, and only one system thread at a time may run
// in a thread's name. That right is the thread's *turn*. It isn't a lock but a state in the fields of Thread:
//
// - A thread holds its turn from its first call on. It gives the turn up while it waits in GetMessageW, and for the
//   length of each send to a window of another thread.
// - A send takes the receiver's turn as soon as it is free, runs the procedure on the sender's system thread under the
//   receiver's name, and gives the turn back. So a send needs no switch between system threads.
// - A system thread holds at most one turn, and none while it waits. So two threads that send to each other don't block
//   each other, and a receiver can send back to its sender.
// - Such visits nest as the calls do. `level` counts them, and a call frame continues only after the visits above it
//   have ended. A message loop inside a visit serves the receiver's queue.
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

// A key, a click or a text that the owner thread hasn't retrieved yet.
struct Input {
    MSG message{};
    std::u16string text;  // with InputText and InputNewText
};

struct Timer {
    HWND window;
    UINT_PTR id;
    Clock::duration period;
    Clock::time_point due;
};

// One thread as its windows see it. Lives as long as the system thread.
struct Thread {
    std::uint64_t id GUARDED_BY(coreMutex) = 0;

    bool turnTaken GUARDED_BY(coreMutex) = true;
    unsigned level GUARDED_BY(coreMutex) = 0;  // visits in progress
    // Set while the call frame of this level waits only for the turn. New senders let it take the turn first. Otherwise
    // a thread that is sent to without a pause would never handle what was posted to it.
    std::optional<unsigned> waitingLevel GUARDED_BY(coreMutex);

    std::deque<MSG> posted GUARDED_BY(coreMutex);
    std::deque<Input> input GUARDED_BY(coreMutex);
    std::vector<Timer> timers GUARDED_BY(coreMutex);
    // Windows whose owner, of another thread, is gone. GetMessageW destroys them.
    std::vector<HWND> toDestroy GUARDED_BY(coreMutex);
    bool quit GUARDED_BY(coreMutex) = false;
    int exitCode GUARDED_BY(coreMutex) = 0;
    std::u16string arrivedText GUARDED_BY(coreMutex);  // of the input message retrieved last

    // How often something came into the queues. A waiting frame looks at its queues again when this has changed.
    std::uint64_t arrivals GUARDED_BY(coreMutex) = 0;
    kernel::Condition arrived GUARDED_BY(coreMutex);
    int retrieving GUARDED_BY(coreMutex) = 0;  // frames that wait in GetMessageW
    // The message retrieved last may take long to handle: input that comes meanwhile is dropped.
    bool inCommand GUARDED_BY(coreMutex) = true;

    HWND focus GUARDED_BY(coreMutex) = nullptr;
    HWND active GUARDED_BY(coreMutex) = nullptr;  // top-level window
    HCURSOR cursor GUARDED_BY(coreMutex) = nullptr;
    POINT pointer GUARDED_BY(coreMutex){};  // where the user clicked last, on the screen
};

struct Window {
    HWND handle GUARDED_BY(coreMutex) = nullptr;
    Thread* thread GUARDED_BY(coreMutex) = nullptr;
    const WindowClass* windowClass GUARDED_BY(coreMutex) = nullptr;
    Window* parent GUARDED_BY(coreMutex) = nullptr;  // of a child
    HWND owner GUARDED_BY(coreMutex) = nullptr;      // of a top-level window; may be of another thread, may be gone
    std::vector<Window*> children GUARDED_BY(coreMutex);
    int id GUARDED_BY(coreMutex) = 0;
    DWORD style GUARDED_BY(coreMutex) = 0;
    DWORD exStyle GUARDED_BY(coreMutex) = 0;
    RECT rectangle GUARDED_BY(coreMutex){};
    std::u16string text GUARDED_BY(coreMutex);
    WORD iconId GUARDED_BY(coreMutex) = 0;
    HWND lastFocus GUARDED_BY(coreMutex) = nullptr;  // top-level: the focus when another window became active
    bool dying GUARDED_BY(coreMutex) = false;
    std::unique_ptr<ClassState> state GUARDED_BY(coreMutex) PT_GUARDED_BY(coreMutex);  // never null
};

struct Core {
    kernel::SlotTable<std::unique_ptr<Window>> windows GUARDED_BY(coreMutex);
    std::vector<HWND> topLevel GUARDED_BY(coreMutex);  // the one in front first
    std::deque<WindowClass> classes GUARDED_BY(coreMutex);
    std::uint64_t threadsSoFar GUARDED_BY(coreMutex) = 0;

    // Notified when a turn becomes free or a window is gone. Without waiters the system call is saved.
    kernel::Condition turnFreed GUARDED_BY(coreMutex);
    int turnWaiters GUARDED_BY(coreMutex) = 0;
    std::vector<HWND> waitingSends GUARDED_BY(coreMutex);  // the receivers of the sends that wait for a turn

    Display* display GUARDED_BY(coreMutex) = nullptr;
    StatusState status GUARDED_BY(coreMutex);
    int waitCursors GUARDED_BY(coreMutex) = 0;
};

// Never destroyed: a detached thread may outlive main().
Core& core();

// In whose name the calling system thread runs.
Thread& currentThread() REQUIRES(coreMutex);

// Null for a dead handle.
Window* findWindow(HWND handle) REQUIRES(coreMutex);

[[nodiscard]] Window& addWindow() REQUIRES(coreMutex);
// Hides the window from displays, and has its own thread destroy it when it next retrieves messages.
void destroyLater(Window& window) REQUIRES(coreMutex);
bool isToBeDestroyed(const Window& window) REQUIRES(coreMutex);
// Removes the window and its children from the table, with their timers and whatever is queued for them. Sends nothing.
void removeWindow(Window& window) REQUIRES(coreMutex);

template <class State>
State& stateOf(const Window& window) REQUIRES(coreMutex)
{
    return static_cast<State&>(*window.state);
}

// The control's state if the window is of that kind, otherwise null.
template <class State>
State* findState(HWND handle, WindowKind kind) REQUIRES(coreMutex)
{
    const Window* window = findWindow(handle);
    return window && window->windowClass->kind == kind ? &stateOf<State>(*window) : nullptr;
}

// The child with that id, the first if there are several. Null if there is none.
Window* findChild(const Window& parent, int id) REQUIRES(coreMutex);
bool isWithin(const Window& window, const Window& ancestor) REQUIRES(coreMutex);
Window& topLevelOf(Window& window) REQUIRES(coreMutex);
bool isVisible(const Window& window) REQUIRES(coreMutex);     // its ancestors as well
bool takesInputOf(const Window& window) REQUIRES(coreMutex);  // neither it nor an ancestor is disabled
inline bool hasStyle(const Window& window, DWORD bits) REQUIRES(coreMutex)
{
    return (window.style & bits) == bits;
}

void announce(const Window& window, Change change) REQUIRES(coreMutex);
void announceGlobal(Change change) REQUIRES(coreMutex);

// Something came into the thread's queues, or its frames have to look at their windows again.
void noteArrival(Thread& thread) REQUIRES(coreMutex);

// A turn became free, or a window that a send waits for is gone.
void wakeTurnWaiters() REQUIRES(coreMutex);

// Keeps the text's capacity where the new text fits, so a counter that changes a million times allocates nothing.
void setText(Window& window, std::u16string_view text) REQUIRES(coreMutex);
// For a text that was changed in place.
void announceText(const Window& window) REQUIRES(coreMutex);

// Sets the last error and gives null, zero or false.
int fail(DWORD error);

}  // namespace platform::window

// core.h - what the window core holds, and the one lock over it.
//
// One mutex, Core::mutex, guards everything here: the windows, the queues, the timers, the state of each
// control. It is held for the length of a look-up or a change and never across a window procedure, so no
// program code and no display ever runs inside it but Display::changed, which only notes.
//
// A thread's *turn* says who runs in that thread's name: its own system thread, or one that sends to its
// windows. It is no lock of its own but a word of the thread's record under the core's mutex:
//
// - A thread holds its turn from its first call on, and gives it up while it waits in GetMessageW and for
//   the length of each send to another thread.
// - A send takes the receiver's turn as soon as nobody holds it, runs the procedure on the sender's system
//   thread under the receiver's name, and gives it back. No thread switches: that is what makes a send to
//   a waiting thread cheap.
// - So a system thread holds one turn at a time and none while it waits: two threads that send to each
//   other can't block each other, and a receiver can send back to its sender.
// - Visits nest as calls do: `level` counts them, and a frame goes on only when the visits above it are
//   over. A message loop inside of a visit thereby serves the receiver's queue until it ends.
#pragma once

#include "window/class_state.h"
#include "window/display.h"

#include "ce/window.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform::window {

using Clock = std::chrono::steady_clock;
using Lock = std::unique_lock<std::mutex>;

// A key, a click, a text on its way to the owner thread.
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
    std::uint64_t id = 0;

    bool turnTaken = true;
    unsigned level = 0;  // visits in progress
    // The level of a frame that could go on if only the turn were free. Senders let it go first: a thread
    // that is sent to without a pause would otherwise never get to what was posted to it.
    std::optional<unsigned> owedTo;

    std::deque<MSG> posted;
    std::deque<Input> input;
    std::vector<Timer> timers;
    std::vector<HWND> condemned;  // went with an owner of another thread; to be destroyed in this one's name
    bool quit = false;
    int exitCode = 0;
    std::u16string arrivedText;  // of the input message retrieved last

    // Counts what came into the queues, so that a waiting frame knows whether to look again.
    std::uint64_t news = 0;
    std::condition_variable newsCame;
    int retrieving = 0;     // frames that wait in GetMessageW
    bool inCommand = true;  // what was retrieved last may take long: input meanwhile is dropped

    HWND focus = nullptr;
    HWND active = nullptr;  // top-level window
    HCURSOR cursor = nullptr;
    POINT pointer{};  // where the user clicked last, on the screen
};

struct Window {
    HWND handle = nullptr;
    Thread* thread = nullptr;
    const WindowClass* windowClass = nullptr;
    Window* parent = nullptr;  // of a child
    HWND owner = nullptr;      // of a top-level window; may be of another thread, may be gone
    std::vector<Window*> children;
    int id = 0;
    DWORD style = 0;
    DWORD exStyle = 0;
    RECT place{};
    std::u16string text;
    WORD iconId = 0;
    HWND lastFocus = nullptr;  // top-level: where the keyboard stood when another window got it
    bool dying = false;
    std::unique_ptr<ClassState> state;  // never null
};

struct WindowSlot {
    std::uint32_t generation = 0;
    std::unique_ptr<Window> window;
};

struct Core {
    std::mutex mutex;

    std::vector<WindowSlot> slots;
    std::vector<std::uint32_t> freeSlots;
    std::vector<HWND> topLevel;  // the one in front first
    std::deque<WindowClass> classes;
    std::uint64_t threadsSoFar = 0;

    // Whoever waits for a turn waits here; the count spares the others the system call.
    std::condition_variable turnFreed;
    int turnWaiters = 0;
    std::vector<HWND> waitingSends;  // the windows that sends wait for

    Display* display = nullptr;
    int waitCursors = 0;
};

// Never destroyed: a detached thread may outlive main().
[[nodiscard]] Core& core();
[[nodiscard]] inline Lock lockCore()
{
    return Lock(core().mutex);
}

// The functions below need the lock.

// In whose name the calling system thread runs.
[[nodiscard]] Thread& currentThread();

// Null for a dead handle.
[[nodiscard]] inline Window* findWindow(HWND handle)
{
    Core& all = core();
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    const std::size_t slot = number & 0xFFFFFFFF;
    if (slot == 0 || slot > all.slots.size())
        return nullptr;
    const WindowSlot& found = all.slots[slot - 1];
    return found.generation == number >> 32 ? found.window.get() : nullptr;
}

[[nodiscard]] Window& addWindow();
// It went with an owner of another thread: never shown from now on, and destroyed in its own thread's name.
void condemn(Window& window);
[[nodiscard]] bool isCondemned(const Window& window);
// Takes it out of the table with its children, its timers and what was queued for it. Sends nothing.
void removeWindow(Window& window);

template <class State>
[[nodiscard]] State& stateOf(Window& window)
{
    return static_cast<State&>(*window.state);
}

// The control's state if the window is of that kind, otherwise null.
template <class State>
[[nodiscard]] State* findState(HWND handle, WindowKind kind)
{
    Window* window = findWindow(handle);
    return window && window->windowClass->kind == kind ? &stateOf<State>(*window) : nullptr;
}

// The child with that id, the first if there are several. Null if there is none.
[[nodiscard]] Window* findChild(const Window& parent, int id);
[[nodiscard]] bool isWithin(const Window& window, const Window& ancestor);
[[nodiscard]] Window& topLevelOf(Window& window);
[[nodiscard]] bool isVisible(const Window& window);     // its ancestors as well
[[nodiscard]] bool takesInputOf(const Window& window);  // neither it nor an ancestor is disabled
[[nodiscard]] inline bool hasStyle(const Window& window, DWORD bits)
{
    return (window.style & bits) == bits;
}

void announce(const Window& window, Change change);
void announceGlobal(Change change);

// Something came into the thread's queues.
void tell(Thread& thread);

void wakeTurnWaiters();

// Keeps the text's old room where it fits: a counter that changes a million times allocates nothing.
void setText(Window& window, std::u16string_view text);
// For a text that was changed in place.
void announceText(const Window& window);

// Sets the last error and gives null, zero or false.
int fail(DWORD error);

}  // namespace platform::window

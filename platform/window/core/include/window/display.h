// display.h - what stands between the window core and whatever shows it.
//
// A display mirrors the windows that the core holds and posts raw input to them; it decides nothing. The
// core tells it of every change as it happens, so a display must only note the change and return: the
// core's lock is held, and the thread may be a run that changes a text 100,000 times a second.
#pragma once

#include "window/core_mutex.h"

#include "ce/types.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform::window {

enum class Change {
    Created,    // a window exists; it is not yet shown
    Shown,      // shown or hidden
    Destroyed,  // the handle is dead
    Text,       // title or text
    Enabled,
    Focus,       // this window has got or lost the focus
    Check,       // a button's check state
    Rows,        // a list box's rows
    Selection,   // a list box's selection or caret row; an edit's selection
    Progress,    // a bar's range or position
    Bands,       // menu, buttons or bands of the command bands
    Placed,      // moved or sized
    Foreground,  // asks to be in front
    Cursor,      // the wait cursor came or went
    Idle,        // the owner thread has begun to wait for messages: its windows take input now
    Busy,        // the owner thread has stopped waiting
    ReadOnly,    // an edit's read-only state
    Icon,        // a window's small icon
    Tree,        // a tree view; see tree_display.h
    Date,        // a date picker's date
};

class Display {
public:
    virtual ~Display() = default;
    // `window` is null for Idle, Busy and Cursor.
    virtual void changed(HWND window, Change change) REQUIRES(coreMutex) = 0;
    // In place of changed(Text): what the window shows from now on.
    virtual void textChanged(HWND window, std::u16string_view text) REQUIRES(coreMutex) = 0;
};

// One display at a time; null takes it away. The core works without one.
void setDisplay(Display* display);

// What a window is to a display.
enum class WindowKind {
    Main,  // a top-level window that the program made by class
    Dialog,
    MessageBox,  // a dialog whose children are its texts and buttons
    Button,
    Static,
    Edit,
    ListBox,
    ProgressBar,
    TreeView,
    DatePicker,
    CommandBands,
    CommandBar,
    Other,
};

// A copy of what the core holds of one window at one moment.
struct WindowState {
    HWND window = nullptr;
    HWND parent = nullptr;  // of a child; the owner of a top-level window
    std::uint64_t thread = 0;
    WindowKind kind = WindowKind::Other;
    std::u16string className;
    std::u16string text;
    int id = 0;
    DWORD style = 0;
    DWORD exStyle = 0;
    RECT place{};          // of the client area: virtual pixels, in the parent's client area or on the screen
    bool visible = false;  // this and the next are the window's own: an ancestor may be hidden or disabled
    bool enabled = false;
    bool focused = false;
    int check = 0;               // button
    bool defaultButton = false;  // Enter would press it now
    UINT messageBoxType = 0;     // message box: the MB_ bits
    int caretRow = -1;           // list box
    int extent = 0;              // list box: how wide its rows are at least, virtual pixels
    long selectionStart = 0;     // edit, in characters; the caret stands at the end
    long selectionEnd = 0;
    bool readOnly = false;
    int progressLow = 0;
    int progressHigh = 0;
    int progressPosition = 0;
    WORD iconId = 0;  // a static that shows an icon; a top-level window's small icon
};

// Each takes the core's lock for the length of the copy. False or empty for a dead window.
[[nodiscard]] bool readWindow(HWND window, WindowState& state);
[[nodiscard]] std::vector<HWND> childrenOf(HWND window);  // in creation order
[[nodiscard]] std::vector<HWND> topLevelWindows();        // the one in front first, hidden ones too
// Does the owner thread wait for messages, with nothing posted or due as input before it?
[[nodiscard]] bool takesInput(HWND window);
// Does any thread show the wait cursor?
[[nodiscard]] bool showsWaitCursor();

// For a caller inside Display::changed, where readWindow and childrenOf would wait for the mutex for ever.
[[nodiscard]] bool readWindowLocked(HWND window, WindowState& state) REQUIRES(coreMutex);
[[nodiscard]] std::vector<HWND> childrenOfLocked(HWND window) REQUIRES(coreMutex);

// Raw input, queued for the owner thread and handled when it retrieves messages. What comes while the
// thread works, or for a window that is disabled or has a disabled ancestor, is dropped: the result is
// false. A thread that handles a character in an edit, or a timer, doesn't count as working: fast typing
// loses nothing. A wish to close that comes while the thread works is kept for afterwards, and while a modal
// dialog that came meanwhile keeps the window disabled. A new size is always kept.
bool postClick(HWND window, long row = -1);  // a button, an edit; a list box's row (-1: empty space)
bool postDoubleClick(HWND window, long row);
bool postKey(HWND window, WORD virtualKey, bool shift = false, bool control = false, bool alt = false);
bool postText(HWND window, std::u16string text);        // as typed; an edit takes it at its selection
bool postNewText(HWND edit, std::u16string text);       // the user has edited: the whole text from now on
bool postClose(HWND topLevel);                          // the close box
bool postCaptionOk(HWND topLevel);                      // the OK button in the caption
bool postFocus(HWND window);                            // a screen reader gives it the keyboard
bool postCommand(HWND topLevel, WORD id);               // a menu item or toolbar button of its bands
bool postResize(HWND topLevel, int width, int height);  // client area, virtual pixels

}  // namespace platform::window

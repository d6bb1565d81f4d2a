// display.h - the interface between the window core and whatever shows the windows.
//
// A display mirrors the core's windows and posts raw input to them. It decides nothing. The core reports each change as
// it happens, with the mutex held, and some runs change a text 100,000 times a second. So a display only notes the
// change and returns.
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
    Created,    // a window exists but isn't shown yet
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
    Idle,        // a thread has begun to wait for messages: its windows take input now
    Busy,        // a thread has stopped waiting
    ReadOnly,    // an edit's read-only state
    Icon,        // a window's small icon
    Tree,        // a tree view's items; see tree_control/tree_display.h
    Date,        // a date picker's date
    Status,      // what the program reports for a status bar; see program_status.h
};

class Display {
public:
    virtual ~Display() = default;
    // `window` is null for Idle, Busy, Cursor and Status.
    virtual void changed(HWND window, Change change) REQUIRES(coreMutex) = 0;
    // In place of changed(Text): what the window shows from now on.
    virtual void textChanged(HWND window, std::u16string_view text) REQUIRES(coreMutex) = 0;
};

// Sets the one display of the process, or null. The core works without one.
void setDisplay(Display* display);

// The kind of a window, as a display distinguishes them.
enum class WindowKind {
    Main,  // a top-level window of a class of the program
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

// A copy of the core's data about one window at one moment.
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
    RECT rectangle{};      // of the client area: virtual pixels, in the parent's client area or on the screen
    bool visible = false;  // this and the next are the window's own: an ancestor may be hidden or disabled
    bool enabled = false;
    bool focused = false;
    int check = 0;               // button
    bool defaultButton = false;  // Enter would press it now
    UINT messageBoxType = 0;     // message box: the MB_ bits
    bool jobQuestion = false;    // message box: a job asks it, and takes postAnswerToAll and postStopJob
    int caretRow = -1;           // list box
    int extent = 0;              // list box: how wide its rows are at least, virtual pixels
    long selectionStart = 0;     // edit, in characters; the caret is at selectionEnd
    long selectionEnd = 0;
    bool readOnly = false;
    int progressLow = 0;
    int progressHigh = 0;
    int progressPosition = 0;
    WORD iconId = 0;  // a static that shows an icon; a top-level window's small icon
};

// Each locks the core's mutex while it copies. False or empty for a dead window.
[[nodiscard]] bool readWindow(HWND window, WindowState& state);
std::vector<HWND> childrenOf(HWND window);  // in creation order
std::vector<HWND> topLevelWindows();        // the one in front first, hidden ones too
// Does the owner thread wait for messages, with nothing posted or due as input before it?
bool takesInput(HWND window);
// Does any thread show the wait cursor?
bool showsWaitCursor();

// For a caller inside Display::changed, where readWindow and childrenOf would wait for the mutex for ever.
[[nodiscard]] bool readWindowLocked(HWND window, WindowState& state) REQUIRES(coreMutex);
std::vector<HWND> childrenOfLocked(HWND window) REQUIRES(coreMutex);

// Raw input. Each call queues it for the owner thread, which handles it when it retrieves messages. Input is dropped,
// and the result is false, while the thread works and for a window that is disabled or has a disabled ancestor.
// Handling a timer or a character in an edit doesn't count as work, so fast typing loses nothing. A close that comes
// while the thread works stays queued until it has finished, and as long as a modal dialog that opened meanwhile
// disables the window. A new size is always queued.
bool postClick(HWND window, long row = -1);  // a button, an edit; a list box's row (-1: empty space)
bool postDoubleClick(HWND window, long row);
bool postKey(HWND window, WORD virtualKey, bool shift = false, bool control = false, bool alt = false);
bool postText(HWND window, std::u16string text);        // as typed; an edit takes it at its selection
bool postNewText(HWND edit, std::u16string text);       // the whole text after the user has edited it
bool postClose(HWND topLevel);                          // the close box
bool postCaptionOk(HWND topLevel);                      // the OK button in the caption
bool postFocus(HWND window);                            // a screen reader sets the focus
bool postCommand(HWND topLevel, WORD id);               // a menu item or toolbar button of its bands
bool postResize(HWND topLevel, int width, int height);  // client area, virtual pixels

// Answers to a message box that go beyond a click on one of its buttons.
bool postRefusal(HWND messageBox);  // the answer that changes nothing: Cancel, No, Abort, or OK alone
// With the answer `id` to this question and the later ones of the job that have the same words up to the name.
bool postAnswerToAll(HWND messageBox, int id);
// Refuses, and asks the job to stop. `closesOwner`: the owner is closed after the job.
bool postStopJob(HWND messageBox, bool closesOwner);

}  // namespace platform::window

// display.h - the interface between the window core and the component that shows the windows.
//
// A display shows the windows of the window core and posts the user's input to them. It doesn't decide what the input
// does. The window core reports each change at once by a call of the Display, and holds coreMutex during this call. A
// backup or restore can change a text 100,000 times a second, so a display must only store the change and return.
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
    Destroyed,  // the window ceases to exist
    Text,       // title or text
    Enabled,
    Focus,       // this window has got or lost the focus, or a dialog's default button has changed
    Check,       // a button's check state
    Rows,        // a list box's rows or their minimum width
    Selection,   // a list box's selection or caret row; an edit's selection
    Progress,    // a bar's range or position
    Bands,       // a menu, the buttons or the bands of command bands
    Placed,      // moved or sized
    Foreground,  // the window is to come to the front
    Cursor,      // the wait cursor appeared or disappeared
    Idle,        // a thread has begun to wait for messages: its windows take input now
    Busy,        // a thread has stopped waiting for messages
    ReadOnly,    // an edit's read-only state
    Icon,        // a window's small icon
    Tree,        // a tree view's items, selection or pictures; see tree_control/tree_display.h
    Date,        // a date picker's date
    Status,      // what the program reports for a status bar; see program_status.h
};

class Display {
public:
    virtual ~Display() = default;
    // `window` is null for Idle, Busy, Cursor and Status.
    virtual void changed(HWND window, Change change) REQUIRES(coreMutex) = 0;
    // Called instead of changed(Text). `text` is the window's new text.
    virtual void textChanged(HWND window, std::u16string_view text) REQUIRES(coreMutex) = 0;
};

// Sets the display of the process. Null removes the display. The window core also works without a display.
void setDisplay(Display* display);

// The kinds of windows that a display distinguishes.
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

// A copy of the window core's data about one window at one moment.
struct WindowState {
    HWND window = nullptr;
    HWND parent = nullptr;  // the parent of a child, or the owner of a top-level window
    std::uint64_t thread = 0;
    WindowKind kind = WindowKind::Other;
    std::u16string className;
    std::u16string text;
    int id = 0;
    DWORD style = 0;
    DWORD exStyle = 0;
    RECT rectangle{};      // the client area in virtual pixels, relative to the parent's client area or to the screen
    bool visible = false;  // `visible` and `enabled` describe this window alone; an ancestor may be hidden or disabled
    bool enabled = false;
    bool focused = false;
    int check = 0;               // button
    bool defaultButton = false;  // Enter would press it now
    UINT messageBoxType = 0;     // message box: the MB_ bits
    bool jobQuestion =
        false;                // message box: a Yes-or-No question of a job, which is a backup or restore (ce/outcome.h)
    int caretRow = -1;        // list box
    int extent = 0;           // list box: the minimum width of its rows, virtual pixels
    long selectionStart = 0;  // edit: offset of the anchor in UTF-16 units; can be larger than selectionEnd
    long selectionEnd = 0;    // edit: offset of the caret in UTF-16 units
    bool readOnly = false;
    int progressLow = 0;
    int progressHigh = 0;
    int progressPosition = 0;
    WORD iconId = 0;  // a static that shows an icon; a top-level window's small icon
};

// The functions from here to showsWaitCursor lock coreMutex. If the window doesn't exist, the result is false or empty.
[[nodiscard]] bool readWindow(HWND window, WindowState& state);
std::vector<HWND> childrenOf(HWND window);  // in creation order
std::vector<HWND> topLevelWindows();        // the frontmost window first; hidden windows too
// Does the window's thread wait in GetMessageW, with no posted message and no deliverable input in its queues?
bool takesInput(HWND window);
// Does any thread show the wait cursor?
bool showsWaitCursor();

// These functions return the same as readWindow and childrenOf, but don't lock the mutex. A caller inside
// Display::changed needs them. The mutex is held there, so readWindow and childrenOf would wait for ever.
[[nodiscard]] bool readWindowLocked(HWND window, WindowState& state) REQUIRES(coreMutex);
std::vector<HWND> childrenOfLocked(HWND window) REQUIRES(coreMutex);

// Functions for raw input. Each call queues the input for the window's thread, which handles the input when it
// retrieves messages. The input is dropped and the result is false if the window or an ancestor is disabled, or if the
// thread is busy. A thread is busy if it doesn't wait for messages. As an exception, a thread isn't busy while it
// handles a timer's message, or text or a key for an edit. (But Enter, Esc and keys with Alt make it busy.) So no
// character is lost if the user types fast. A close is queued even if the thread is busy. If a modal dialog then
// disables the window, the close stays queued until the window is enabled again. A new size is queued even if the
// thread is busy or the window is disabled.
bool postClick(HWND window, long row = -1);  // a button, an edit; a list box's row (-1: empty space)
bool postDoubleClick(HWND window, long row);
bool postKey(HWND window, WORD virtualKey, bool shift = false, bool control = false, bool alt = false);
bool postText(HWND window, std::u16string text);        // as typed; an edit replaces its selection with it
bool postNewText(HWND edit, std::u16string text);       // the whole text after the user has edited it
bool postClose(HWND topLevel);                          // the close box
bool postCaptionOk(HWND topLevel);                      // the OK button in the caption
bool postFocus(HWND window);                            // a screen reader sets the focus
bool postCommand(HWND topLevel, WORD id);               // a menu item or toolbar button of the window's command bands
bool postResize(HWND topLevel, int width, int height);  // client area, virtual pixels

// Functions that answer a message box without a click on one of its buttons.
bool postRefusal(
    HWND messageBox);  // the answer that changes nothing: Cancel, No, Abort, or OK if it is the only button
// Answers the message box with the button `id`. If WindowState::jobQuestion is true, later questions of the same kind
// in the same job get the same answer. Questions of the same kind have the same caption, and the same words before the
// name of the file or database.
bool postAnswerToAll(HWND messageBox, int id);
// Gives the message box the same answer as postRefusal. If WindowState::jobQuestion is true, also asks the job to stop.
// If `closesOwner` is true, the owner window of the message box is closed after the job.
bool postStopJob(HWND messageBox, bool closesOwner);

}  // namespace platform::window

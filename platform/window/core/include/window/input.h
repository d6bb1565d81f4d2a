// input.h - the messages that bring the display's raw input to the thread that owns the window.
//
// The numbers of these messages are larger than those that a program can use. So the program's message loop passes such
// a message to DispatchMessageW without handling it. Keys are the exception: they arrive as the platform's own messages
// WM_KEYDOWN and WM_SYSKEYDOWN.
#pragma once

#include "window/core.h"

namespace platform::window {

inline constexpr UINT InputFirst = 0x10000;
// For a list box, wParam is the row. For a click on the empty space, the row is -1 and wParam has all bits set. For a
// tree, wParam is the item and lParam the TreePart.
inline constexpr UINT InputClick = 0x10001;
inline constexpr UINT InputDoubleClick = 0x10002;  // like InputClick
inline constexpr UINT InputText = 0x10003;         // Thread::arrivedText, as typed
inline constexpr UINT InputNewText = 0x10004;      // Thread::arrivedText, an edit's whole text
inline constexpr UINT InputClose = 0x10005;
inline constexpr UINT InputCaptionOk = 0x10006;
inline constexpr UINT InputCommand = 0x10007;  // wParam: id
inline constexpr UINT InputResize = 0x10008;   // wParam: width, lParam: height
inline constexpr UINT InputDate = 0x10009;     // wParam: month and year, lParam: day
inline constexpr UINT InputFocus = 0x1000A;
inline constexpr UINT InputAnswer = 0x1000C;  // wParam: id (0: refuse), lParam: AnswerReach
inline constexpr UINT InputRelist = 0x1000D;  // makes the program list the children of expanded tree items again
// This message isn't input. It is sent after the parent's WM_SIZE to a child that follows the size of its parent.
inline constexpr UINT ParentSized = 0x1000B;

// What an answer to a message box affects.
enum class AnswerReach { OneQuestion, AllOfItsKind, Job, JobAndOwner };

// Bits of a key message's lParam. The platform defines the bit for Alt and reserves the other two.
inline constexpr LPARAM KeyWithAlt = LPARAM{1} << 29;
inline constexpr LPARAM KeyWithShift = LPARAM{1} << 25;
inline constexpr LPARAM KeyWithControl = LPARAM{1} << 26;

// Queues raw input for the window, according to the rules in display.h. Returns false if the input was dropped.
bool queueInput(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// These functions queue a click on a control, and directly after it a second input. queueClickAndCommand adds a command
// for the control's top-level window. queueClickAndKey adds a key for the control. Either both inputs are queued, or
// both are dropped and the result is false.
bool queueClickAndCommand(HWND control, WPARAM wParam, LPARAM lParam, WORD command);
bool queueClickAndKey(HWND control, WPARAM wParam, LPARAM lParam, WORD virtualKey);

// Can the window of the input take the input now?
bool isDeliverable(const Input& input) REQUIRES(coreMutex);
// Must the input be dropped because its window was disabled after the input was queued?
bool isToBeDropped(const Input& input) REQUIRES(coreMutex);

// Delivers one of the messages above. DispatchMessageW calls this function.
LRESULT dispatchInput(const MSG& message);

}  // namespace platform::window

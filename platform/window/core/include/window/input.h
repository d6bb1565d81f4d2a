// input.h - raw input, as messages between the display and the owner thread.
//
// Their numbers are above those that a program can use, so the program's message loop dispatches them unseen. Keys are
// the exception: they arrive as WM_KEYDOWN and WM_SYSKEYDOWN.
#pragma once

#include "window/core.h"

namespace platform::window {

inline constexpr UINT InputFirst = 0x10000;
inline constexpr UINT InputClick = 0x10001;        // wParam: row (-1: all ones), or a tree's item, with lParam: part
inline constexpr UINT InputDoubleClick = 0x10002;  // likewise
inline constexpr UINT InputText = 0x10003;         // Thread::arrivedText, as typed
inline constexpr UINT InputNewText = 0x10004;      // Thread::arrivedText, an edit's whole text
inline constexpr UINT InputClose = 0x10005;
inline constexpr UINT InputCaptionOk = 0x10006;
inline constexpr UINT InputCommand = 0x10007;  // wParam: id
inline constexpr UINT InputResize = 0x10008;   // wParam: width, lParam: height
inline constexpr UINT InputDate = 0x10009;     // wParam: month and year, lParam: day
inline constexpr UINT InputFocus = 0x1000A;
inline constexpr UINT InputAnswer = 0x1000C;  // wParam: id, or 0 to refuse, lParam: AnswerReach
inline constexpr UINT InputRelist = 0x1000D;  // a tree's expanded items
// No input: sent to a child that follows the size of its parent, after the parent's WM_SIZE.
inline constexpr UINT ParentSized = 0x1000B;

// What else an answer to a message box has an effect on.
enum class AnswerReach { OneQuestion, AllOfItsKind, Job, JobAndOwner };

// Bits of a key message's lParam. The platform defines the one for Alt and reserves the others.
inline constexpr LPARAM KeyWithAlt = LPARAM{1} << 29;
inline constexpr LPARAM KeyWithShift = LPARAM{1} << 25;
inline constexpr LPARAM KeyWithControl = LPARAM{1} << 26;

// Queues raw input for the window, by the rules of display.h. False if it was dropped.
bool queueInput(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Queues a click on a control, and directly after it a command of its top-level window or a key for it. False if both
// were dropped.
bool queueClickAndCommand(HWND control, WPARAM wParam, LPARAM lParam, WORD command);
bool queueClickAndKey(HWND control, WPARAM wParam, LPARAM lParam, WORD virtualKey);

// Can the window take it now?
bool isDeliverable(const Input& input) REQUIRES(coreMutex);
// Must it be dropped because its window was disabled after it was queued?
bool isToBeDropped(const Input& input) REQUIRES(coreMutex);

// Delivers a message of this header, for DispatchMessageW.
LRESULT dispatchInput(const MSG& message);

}  // namespace platform::window

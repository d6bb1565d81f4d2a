// input.h - raw input as messages of the core's own.
//
// Their numbers lie above all that a program can name for itself, so a program's loop passes them on
// without a look. Keys are no such messages: they come as WM_KEYDOWN and WM_SYSKEYDOWN.
#pragma once

#include "window/core.h"

namespace platform::window {

inline constexpr UINT InputFirst = 0x10000;
inline constexpr UINT InputClick = 0x10001;        // wParam: row, -1 as all ones; of a tree the item, lParam: part
inline constexpr UINT InputDoubleClick = 0x10002;  // likewise
inline constexpr UINT InputText = 0x10003;         // Thread::arrivedText, as typed
inline constexpr UINT InputNewText = 0x10004;      // Thread::arrivedText, an edit's whole text
inline constexpr UINT InputClose = 0x10005;
inline constexpr UINT InputCaptionOk = 0x10006;
inline constexpr UINT InputCommand = 0x10007;  // wParam: id
inline constexpr UINT InputResize = 0x10008;   // wParam: width, lParam: height
inline constexpr UINT InputDate = 0x10009;     // wParam: month and year, lParam: day
inline constexpr UINT InputFocus = 0x1000A;
// No input: sent to a child that follows the size of its parent, after the parent's WM_SIZE.
inline constexpr UINT ParentSized = 0x1000B;

// Bits of a key message's lParam: the platform's own for Alt; the others lie where it reserves them.
inline constexpr LPARAM KeyWithAlt = LPARAM{1} << 29;
inline constexpr LPARAM KeyWithShift = LPARAM{1} << 25;
inline constexpr LPARAM KeyWithControl = LPARAM{1} << 26;

// Raw input for the window, by the rules of display.h. False if it is dropped.
bool queueInput(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Can it be handed to its window as things stand?
[[nodiscard]] bool isDeliverable(const Input& input) REQUIRES(coreMutex);
// Is it to be thrown away, since its window was disabled meanwhile?
[[nodiscard]] bool isToBeDropped(const Input& input) REQUIRES(coreMutex);

// What DispatchMessageW does with a message of this file.
LRESULT dispatchInput(const MSG& message);

}  // namespace platform::window

// set_questions.h - what restoring a database asks of the shell, which defines it all: texts, the owner of a question.
#pragma once

#include "ce/window.h"

inline constexpr DWORD TextChars = 260;

// Owner of every question. Null until the main window exists.
extern HWND gMainWindow;

// Two scratch buffers, so that two texts of the string table can be held at once.
extern WCHAR gTextA[TextChars];
extern WCHAR gTextB[TextChars];

// Text `id` (114 to 144) into one of the two buffers, which is the result. Good until the next LoadText on it.
WCHAR* LoadText(UINT id, WCHAR (&scratch)[TextChars]);

// The wait cursor, while a run works; SetCursor(nullptr) takes it away.
inline void SetWaitCursor()
{
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<const WCHAR*>(IDC_WAIT)));
}

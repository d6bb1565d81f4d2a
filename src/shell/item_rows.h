// item_rows.h - the rows of a list box that shows the items of a set. A prefix says of which kind an item is.
#pragma once

#include "ce/window.h"

inline constexpr int ItemListBoxId = 1006;

// A prefix and a name of 260 characters.
inline constexpr DWORD RowChars = 260 + 16;

// The row of an item of this kind.
void FormatItemRow(WCHAR (&row)[RowChars], BYTE kind, const WCHAR* name);

// Adds a row for each entry of the lists and, if it is marked, the registry.
void AddItemRows(HWND listBox);

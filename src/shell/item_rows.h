// item_rows.h - the rows of a list box that shows the items of a set. A prefix says of which kind an item is.
#pragma once

#include "ce/window.h"

inline constexpr int ItemListBoxId = 1006;

// The size of a row in characters: a prefix and a name of 260 characters.
inline constexpr DWORD RowChars = 260 + 16;

void FormatItemRow(WCHAR (&row)[RowChars], BYTE kind, const WCHAR* name);

// Adds a row for each entry of the lists, and a row for the registry if it is marked.
void AddItemRows(HWND listBox);

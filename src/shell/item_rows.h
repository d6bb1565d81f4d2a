// item_rows.h - how the dialogs show the items of a set in their list box: one row an item, told apart by prefix.
#pragma once

#include "ce/window.h"

inline constexpr int ItemListBoxId = 1006;

// A prefix and a name of 260 characters.
inline constexpr DWORD RowChars = 260 + 16;

// The row of an item of this kind (ItemKindFile, ItemKindDatabase, any other: the registry).
void FormatItemRow(WCHAR (&row)[RowChars], BYTE kind, const WCHAR* name);

// Adds a row for each entry of gFileList and gDatabaseList and, if it is marked, the registry.
void AddItemRows(HWND listBox);

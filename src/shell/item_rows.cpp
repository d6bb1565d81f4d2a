// item_rows.cpp - see item_rows.h.

#include "item_rows.h"

#include "engine/questions.h"
#include "program.h"
#include "set/set_entry.h"
#include "set/set_state.h"

#include "ce/controls.h"
#include "ce/text.h"

namespace {

constexpr WPARAM HorizontalExtent = 300;  // pixels; paths are longer than the box is wide

void AddRow(HWND listBox, BYTE kind, const WCHAR* name)
{
    WCHAR row[RowChars];
    FormatItemRow(row, kind, name);
    SendMessageW(listBox, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
}

void AddListRows(HWND listBox, ItemList* list, BYTE kind)
{
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list && list->First(entry.bytes, &length); more; more = list->Next(entry.bytes, &length))
        AddRow(listBox, kind, entry.name);
}

}  // namespace

void FormatItemRow(WCHAR (&row)[RowChars], BYTE kind, const WCHAR* name)
{
    switch (kind) {
    case ItemKindFile:
        wsprintfW(row, LoadText(TextFileRowFormat, gTextB), name);
        break;
    case ItemKindDatabase:
        wsprintfW(row, LoadText(TextDatabaseRowFormat, gTextB), name);
        break;
    default:
        CopyText(row, LoadText(TextRegistry, gTextB));
        break;
    }
}

void AddItemRows(HWND listBox)
{
    SendMessageW(listBox, LB_SETHORIZONTALEXTENT, HorizontalExtent, 0);
    AddListRows(listBox, gFileList, ItemKindFile);
    AddListRows(listBox, gDatabaseList, ItemKindDatabase);
    if (gRegistryMarked)
        AddRow(listBox, ItemKindRegistry, u"");
}

#include "item_rows.h"

#include "dialogs.h"
#include "engine/questions.h"
#include "set/set_state.h"

#include "ce/controls.h"
#include "ce/text.h"

namespace {

void AddRow(HWND listBox, BYTE kind, const WCHAR* name)
{
    WCHAR row[RowChars];
    FormatItemRow(row, kind, name);
    SendMessageW(listBox, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
}

}  // namespace

void FormatItemRow(WCHAR (&row)[RowChars], BYTE kind, const WCHAR* name)
{
    wsprintfW(row, LoadText(KindOf(kind).row, gTextB), name);
}

void AddItemRows(HWND listBox)
{
    SendMessageW(listBox, LB_SETHORIZONTALEXTENT, PathListExtent, 0);
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list)
            ForEachEntry(*kind.list, [&](const EntryBuffer& entry) { AddRow(listBox, kind.number, entry.name); });
        else if (gRegistryMarked)
            AddRow(listBox, kind.number, u"");
    }
}

// run_progress.cpp - see run_progress.h.

#include "run_progress.h"

#include "engine/questions.h"
#include "set/item_list.h"

namespace {

constexpr DWORD RunRange = 1000;

}  // namespace

DWORD CountOf(ItemList* list)
{
    return list ? list->Count() : 0;
}

HWND OpenRunProgress(UINT id, DWORD items)
{
    if (items == 0)
        return nullptr;
    const WCHAR* text = LoadText(id, gTextA);
    return ProgressOpen(text, text, RunRange, RunRange / items);
}

void CloseRunProgress(HWND& progress)
{
    if (progress)
        ProgressClose(progress);
    progress = nullptr;
}

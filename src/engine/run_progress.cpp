#include "run_progress.h"

#include "engine/questions.h"
#include "set/set_state.h"

#include "ce/text.h"

namespace {

constexpr DWORD RunRange = 1000;
constexpr DWORD NothingShown = 0xFFFFFFFF;

}  // namespace

HWND OpenRunProgress(UINT id, DWORD items)
{
    if (items == 0)
        return nullptr;
    const WCHAR* text = LoadText(id, gTextA);
    return gRunQuestions.openProgress(text, text, RunRange, RunRange / items);
}

void ReportRunBegins(DWORD run, const WCHAR* listPath)
{
    DWORD items = gRegistryMarked ? 1 : 0;
    std::uint64_t bytes = 0;
    for (const ItemKind& kind : ItemKinds) {
        if (kind.list && *kind.list) {
            items += (*kind.list)->Count();
            bytes += (*kind.list)->ContentBytes();
        }
    }
    BeginRun(run, listPath, items, bytes);
}

void CloseRunProgress(HWND& progress)
{
    if (progress)
        ProgressClose(progress);
    progress = nullptr;
}

void ShowItem(HWND progress, const ItemKind& kind, const WCHAR* name)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(kind.message, gTextA), name);
    ProgressSetMessage(progress, message);
}

void StepRunProgress(HWND progress)
{
    ProgressStep(progress, 0);
}

ByteCounter StartByteCounter(HWND progress, UINT id)
{
    return {progress, LoadText(id, gTextA), NothingShown};
}

void ShowBytes(ByteCounter& counter, DWORD bytes)
{
    const DWORD thousands = bytes / 1000;
    if (thousands == counter.shownThousands)
        return;
    counter.shownThousands = thousands;
    WCHAR text[TextChars];
    wsprintfW(text, counter.format, thousands);
    ProgressSetCount(counter.progress, text);
}

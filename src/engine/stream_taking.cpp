// stream_taking.cpp - see stream_taking.h.

#include "stream_taking.h"

#include "engine/questions.h"
#include "set/set_entry.h"

#include "ce/text.h"

#include <algorithm>

namespace {

constexpr DWORD PieceBytes = 260;
constexpr DWORD NothingShown = 0xFFFFFFFF;

// Most pieces leave the number as it is; then its text stands there already.
void Count(RestoreRun& run, const WCHAR* format, DWORD bytes, DWORD& shown)
{
    run.restoredBytes += bytes;
    const DWORD thousands = run.restoredBytes / 1000;
    if (thousands == shown)
        return;
    shown = thousands;
    WCHAR counter[TextChars];
    wsprintfW(counter, format, thousands);
    ProgressSetCount(run.progress, counter);
}

void CopyPieces(RestoreRun& run, HANDLE temporary, DWORD position, DWORD end, bool count)
{
    const WCHAR* format = LoadText(TextRestoredCountFormat, gTextA);
    BYTE piece[PieceBytes];
    DWORD shown = NothingShown;
    while (position <= end) {
        DWORD bytes = 0;
        if (!ReadFile(run.dataFile, piece, std::min(PieceBytes, end - position), &bytes, nullptr))
            NoteFailure(run.item, GetLastError());
        if (bytes == 0)
            break;
        position += bytes;
        DWORD written = 0;
        if (!WriteFile(temporary, piece, bytes, &written, nullptr))
            NoteFailure(run.item, GetLastError());
        if (count)
            Count(run, format, bytes, shown);
    }
    if (position != end)
        NoteFailure(run.item, ERROR_FILE_CORRUPT);
}

HANDLE CreateTemporaryStream()
{
    (void)DeclareTemporaryFile(TemporaryStreamPath);
    const HANDLE temporary = CreateFileW(TemporaryStreamPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (temporary != INVALID_HANDLE_VALUE && GetLastError() == ERROR_ALREADY_EXISTS)
        ReportReplacedFile(TemporaryStreamPath);
    return temporary;
}

}  // namespace

void BeginItem(RestoreRun& run)
{
    run.item = {};
}

void EndItem(RestoreRun& run, BYTE kind, const WCHAR* name)
{
    if (!IsWhole(run.item))
        ReportItem(OutcomeNotRestored, kind, name, run.item.error);
}

bool TakeStreamOut(RestoreRun& run, const BYTE* blob, bool count)
{
    const DWORD start = EntryStartOffset(blob);
    if (SetFilePointer(run.dataFile, static_cast<LONG>(start), nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
        NoteFailure(run.item, GetLastError());
        return false;
    }
    const HANDLE temporary = CreateTemporaryStream();
    if (temporary == INVALID_HANDLE_VALUE) {
        NoteFailure(run.item, GetLastError());
        return false;
    }
    ProgressStep(run.progress, 0);
    CopyPieces(run, temporary, start, EntryEndOffset(blob), count);
    if (!CloseHandle(temporary))
        NoteFailure(run.item, GetLastError());
    return true;
}

// restore_run.cpp - see restore_run.h.

#include "restore_run.h"

#include "compressed_stream.h"
#include "options.h"
#include "questions.h"
#include "run_progress.h"
#include "set_entry.h"
#include "set_state.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/text.h"

#include <algorithm>

namespace {

constexpr UINT FileMessageText = 114;
constexpr UINT FileExistsText = 115;
constexpr UINT CounterText = 116;
constexpr UINT RestoringFilesText = 141;
constexpr UINT WarningText = 142;
constexpr UINT NothingToRestoreText = 144;
constexpr DWORD PieceBytes = 260;
const WCHAR TemporaryPath[] = u"\\BK000.TMP"; // in the device's root, whatever the storage of the set

// What one restore holds; nothing of it outlives the run.
struct RestoreRun {
    HANDLE dataFile = INVALID_HANDLE_VALUE;
    HWND progress = nullptr;
    DWORD restoredBytes = 0; // copied out of the data file so far
};

bool NothingIsListed()
{
    return CountOf(gFileList) == 0 && CountOf(gDatabaseList) == 0 && !gRegistryMarked;
}

DWORD TellNothingToRestore()
{
    MessageBoxW(gMainWindow, LoadText(NothingToRestoreText, gTextA), u"Info", MB_OK);
    return 0;
}

bool AskReplace(const WCHAR* name)
{
    WCHAR question[TextChars];
    wsprintfW(question, LoadText(FileExistsText, gTextA), name);
    return MessageBoxW(gMainWindow, question, LoadText(WarningText, gTextB),
                       MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2) == IDYES;
}

// Any mode but ask and skip replaces.
bool PolicyAllows(const WCHAR* name)
{
    const WORD mode = gOptions.restoreMode;
    if (mode != RestoreModeAsk && mode != RestoreModeSkip)
        return true;
    if (GetFileAttributesW(name) == INVALID_FILE_ATTRIBUTES)
        return true;
    return mode == RestoreModeAsk && AskReplace(name);
}

// Bytes of the data file from where it stands, `start`, to `end`; fewer if the file ends before.
void CopyStreamOut(RestoreRun& run, HANDLE temporary, DWORD start, DWORD end)
{
    const WCHAR* format = LoadText(CounterText, gTextA);
    BYTE piece[PieceBytes];
    DWORD position = start;
    while (position <= end) {
        DWORD bytes = 0;
        ReadFile(run.dataFile, piece, std::min(PieceBytes, end - position), &bytes, nullptr);
        if (bytes == 0)
            return;
        position += bytes;
        run.restoredBytes += bytes;
        // A write that fails leaves a stream that ends early, which is all that is looked for.
        DWORD written = 0;
        (void)WriteFile(temporary, piece, bytes, &written, nullptr);
        WCHAR counter[TextChars];
        wsprintfW(counter, format, run.restoredBytes / 1000);
        ProgressSetCount(run.progress, counter);
    }
}

// Takes an item's stream out of the set into the temporary file. 0 if there is none, and then nothing is left behind.
bool TakeStreamOut(RestoreRun& run, DWORD start, DWORD end)
{
    SetLastError(ERROR_SUCCESS);
    if (SetFilePointer(run.dataFile, static_cast<LONG>(start), nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER)
        return false;
    HANDLE temporary = CreateFileW(TemporaryPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (temporary == INVALID_HANDLE_VALUE)
        return false;
    ProgressStep(run.progress, 0);
    CopyStreamOut(run, temporary, start, end);
    CloseHandle(temporary);
    return true;
}

// One file. Its failure is its own: nothing is told, and the run goes on.
void RestoreFile(RestoreRun& run, const EntryBuffer& entry)
{
    WCHAR message[TextChars];
    wsprintfW(message, LoadText(FileMessageText, gTextA), entry.name);
    ProgressSetMessage(run.progress, message);

    SetCursor(nullptr);
    const bool wanted = PolicyAllows(entry.name);
    SetWaitCursor();
    if (wanted && TakeStreamOut(run, EntryStartOffset(entry.bytes), EntryEndOffset(entry.bytes))) {
        (void)DecompressFile(TemporaryPath, entry.name);
        (void)DeleteFileW(TemporaryPath);
    }
    ProgressStep(run.progress, 0);
}

void RestoreFiles(RestoreRun& run)
{
    run.progress = OpenRunProgress(RestoringFilesText, CountOf(gFileList));
    SetWaitCursor();
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = gFileList && gFileList->First(entry.bytes, &length); more;
         more = gFileList->Next(entry.bytes, &length))
        RestoreFile(run, entry);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}

} // namespace

DWORD RestoreSet(const WCHAR* dataPath, const WCHAR* listPath, DWORD mode)
{
    if (!ShowRestoreDialog(LOWORD(mode), listPath))
        return 0;
    if (NothingIsListed())
        return TellNothingToRestore();

    RestoreRun run;
    run.dataFile = CreateFileW(dataPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (run.dataFile == INVALID_HANDLE_VALUE) {
        SetCursor(nullptr);
        return 1;
    }
    RestoreFiles(run);
    CloseHandle(run.dataFile);
    return 1;
}

// item_storing.h - one item of a backup: packed to a temporary stream, named by the list, its bytes in the data file.
#pragma once

#include "run_log.h"
#include "source_deletion.h"

#include "ce/file.h"
#include "ce/window.h"

// What one backup holds; nothing of it outlives the run.
struct BackupRun {
    HANDLE listFile = INVALID_HANDLE_VALUE;
    HANDLE dataFile = INVALID_HANDLE_VALUE;
    HWND progress = nullptr;
    BackupLog* log = nullptr; // absent until the set has its number, or if there is no memory for it
    DWORD number = 0;
    DWORD dataBytes = 0; // in the data file so far: where the next item starts
    WCHAR storageRoot[MAX_PATH] = {};
    WCHAR temporaryPath[MAX_PATH] = {};
    SourceDeletion deletion = {};
};

// The log is optional: without one a line goes nowhere.
template <class... Arguments>
void Log(BackupRun& run, const WCHAR* format, const Arguments&... arguments)
{
    if (run.log)
        run.log->Write(format, arguments...);
}

// One file. Its failure is its own: it goes to the log, and the run goes on.
void BackUpFile(BackupRun& run, const WCHAR* name);

// ce/status.h - reports to the host what a status bar below the main window shows. The host (the platform's process,
// which runs the program) uses these data only for the status bar.
#pragma once

#include "ce/types.h"

struct ProgramStatus {
    DWORD markedFiles;
    std::uint64_t markedBytes;  // total size of the marked files
    DWORD markedDatabases;
    BOOL registryMarked;
    const WCHAR* shownExtensions;  // the tree shows only these; each ends with a NUL, the list with another; null: all
    FILETIME shownSince;           // the tree shows only files that were written then or later; 0: all files
    DWORD hiddenAttributes;        // the tree hides files with one of these FILE_ATTRIBUTE_ bits
    BOOL deletesStored;            // a backup deletes the files that it has stored
    const WCHAR* newestSet;        // path of the list file of the newest set on the storages; empty: there is none
    FILETIME newestSetTime;        // UTC
    DWORD jobs;                    // number of jobs that have ended; each may have cleared the marks
};

// The host copies the status. Can be called on any thread.
void ReportStatus(const ProgramStatus& status);

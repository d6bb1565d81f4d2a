// ce/outcome.h - what a program tells its host of the outcome of a job, one backup or restore.
//
// The program's own texts pass over much in silence. Its user has to hear of it all the same, so the host tells what is
// reported here at the end of the job, where it has a window, and at the end of the process, on standard error and in
// the exit code. Any thread.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

// What became of an item.
inline constexpr DWORD OutcomeNotStored = 1;    // it isn't in the set, or not whole
inline constexpr DWORD OutcomeNotRestored = 2;  // it isn't on the device as the set has it
inline constexpr DWORD OutcomeNotDeleted = 3;   // it is in the set, and was to be deleted, and stays
inline constexpr DWORD OutcomeReplaced = 4;     // a file of the user's had the name of a temporary file, and is gone

// What the item is.
inline constexpr DWORD OutcomeFile = 1;
inline constexpr DWORD OutcomeDatabase = 2;
inline constexpr DWORD OutcomeRegistry = 3;

// `name` is a file's full path, a database's name, or anything for the registry. `error` is the reason, a number of
// ce/error.h. An item that is reported twice in one job counts once, with the first reason.
void ReportItem(DWORD outcome, DWORD kind, const WCHAR* name, DWORD error);

// No set could be made in `folder`. ERROR_FILE_EXISTS: every number is taken.
void ReportNoSet(const WCHAR* folder, DWORD error);

// While on, a folder that the user may not enter or read isn't reported: the program only looks for what there is to
// choose from, and such a folder offers nothing.
void SearchForChoices(BOOL on);

// Around each job. After EndJob the host tells what was reported and what failed since BeginJob, in a message box over
// `owner` where it has a window.
void BeginJob();
void EndJob(HWND owner);

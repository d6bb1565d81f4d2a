// ce/outcome.h - reports the outcome of a job, one backup or restore, to the host.
//
// The program's own texts don't mention every failure. The host shows what is reported here: at the end of the job if
// it has a window, and at the end of the process on standard error and in the exit code. Any thread.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

// What became of an item.
inline constexpr DWORD OutcomeNotStored = 1;    // it isn't in the set, or not whole
inline constexpr DWORD OutcomeNotRestored = 2;  // it isn't on the device as the set has it
inline constexpr DWORD OutcomeNotDeleted = 3;   // it is in the set and should have been deleted, but wasn't
inline constexpr DWORD OutcomeReplaced = 4;     // a temporary file has replaced a file of the user's with its name
inline constexpr DWORD OutcomeNotReached = 5;   // the job was stopped before it

// What the item is.
inline constexpr DWORD OutcomeFile = 1;
inline constexpr DWORD OutcomeDatabase = 2;
inline constexpr DWORD OutcomeRegistry = 3;

// `name` is a file's full path, a database's name, or anything for the registry. `error` is the reason, a number of
// ce/error.h. If an item is reported twice in one job, only the first report counts.
void ReportItem(DWORD outcome, DWORD kind, const WCHAR* name, DWORD error);

// Reports that no set could be created in `folder`. ERROR_FILE_EXISTS: every number is taken. ERROR_CANCELLED: the job
// was stopped before that.
void ReportNoSet(const WCHAR* folder, DWORD error);

// While on, a folder that the user may not enter or read isn't reported. The program then only searches for things that
// the user can choose, and nothing in such a folder can be chosen.
void SearchForChoices(BOOL on);

// Called at the beginning and the end of each job. At EndJob the host shows what was reported and what failed since
// BeginJob, in a message box over `owner` if it has a window.
void BeginJob();
void EndJob(HWND owner);

// TRUE once the user has asked to stop the job that is in progress. A job calls it between its items. If it stops, what
// it has done stays, and it reports each item that it didn't reach.
BOOL JobIsToStop();

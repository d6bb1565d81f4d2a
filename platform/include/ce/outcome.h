// ce/outcome.h - reports the outcome of a job, one backup or restore, to the host.
//
// The program's own texts don't mention every failure. The host shows what is reported here: at the end of the job if
// the host has a window, and at the end of the process on standard error and in the exit code. All functions can be
// called on any thread.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

// What became of an item.
inline constexpr DWORD OutcomeNotStored = 1;    // it isn't in the set, or not whole
inline constexpr DWORD OutcomeNotRestored = 2;  // the device doesn't have it as it is in the set
inline constexpr DWORD OutcomeNotDeleted = 3;   // it is in the set and should have been deleted, but wasn't
inline constexpr DWORD OutcomeReplaced = 4;     // a temporary file has replaced a file of the user with the same name
inline constexpr DWORD OutcomeNotReached = 5;   // the job was stopped before it began with the item

// What the item is.
inline constexpr DWORD OutcomeFile = 1;
inline constexpr DWORD OutcomeDatabase = 2;
inline constexpr DWORD OutcomeRegistry = 3;

// `name` is a file's full path, a database's name, or anything for the registry. `error` is the reason, a number of
// ce/error.h. If an item is reported twice in one job, only the first report is kept.
void ReportItem(DWORD outcome, DWORD kind, const WCHAR* name, DWORD error);

// Reports that no set could be created in `folder`. ERROR_FILE_EXISTS: every number is taken. ERROR_CANCELLED: the job
// was stopped before it created the set.
void ReportNoSet(const WCHAR* folder, DWORD error);

// Turns the search for choices on or off. While it is on, a folder that the user may not enter or read isn't reported.
// The program turns it on while it looks for things that the user can choose. Nothing in such a folder can be chosen,
// so its failure doesn't matter.
void SearchForChoices(BOOL on);

// Called at the beginning and the end of each job. At EndJob the host shows what was reported and what failed since
// BeginJob, in a message box over `owner` if the host has a window.
void BeginJob();
void EndJob(HWND owner);

// TRUE once the user has asked to stop the job that is in progress. A job calls this function between its items. If the
// job stops, the items that it has finished stay, and it reports each other item as OutcomeNotReached.
BOOL JobIsToStop();

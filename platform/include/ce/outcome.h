// ce/outcome.h - reports the outcome of a job (one backup or restore) to the host.
//
// The host is the platform's process, which runs the program. The program's own texts don't mention every failure. The
// host shows what is reported here. If it has a window, it shows the reports at the end of the job. At the end of the
// process it writes them to standard error, and the exit code says that there were reports. All functions can be called
// on any thread.
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

// `name` is the full path of a file or the name of a database. For the registry, `name` has no meaning. `error` is the
// reason, a number of ce/error.h. If an item is reported twice with the same outcome in one job, the host shows it
// once, with the first error. But if that error is 3, which says little about the cause, the error of the next report
// replaces it.
void ReportItem(DWORD outcome, DWORD kind, const WCHAR* name, DWORD error);

// Reports that no set could be created in `folder`. `error` is ERROR_FILE_EXISTS if every number is taken, and
// ERROR_CANCELLED if the job was stopped before it created the set. Otherwise `error` is that of the call that failed.
void ReportNoSet(const WCHAR* folder, DWORD error);

// Tells the host that the program begins or ends a search for things that the user can choose, such as sets. If the
// user has no permission to read a folder or file, the host doesn't record this failure during the search, because the
// user couldn't choose anything there.
void SearchForChoices(BOOL on);

// Called at the beginning and the end of each job. If the host has a window, EndJob shows a message box over `owner`
// with everything that was reported or failed since BeginJob.
void BeginJob();
void EndJob(HWND owner);

// TRUE once the current job must stop, because the user or a signal has asked for it. A job calls this function between
// its items. If the job stops, the items that it has finished stay, and it reports each other item as
// OutcomeNotReached.
BOOL JobIsToStop();

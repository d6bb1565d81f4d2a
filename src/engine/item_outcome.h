// item_outcome.h - notes whether the current item of a run has failed, and distinguishes temporary files of the program
// from files of the user. A run reports failed items and replaced files of the user (ce/outcome.h).
#pragma once

#include "set/item_kinds.h"

#include "ce/error.h"
#include "ce/types.h"

struct ItemOutcome {
    DWORD error = ERROR_SUCCESS;  // error of the first call that failed
};

inline bool IsWhole(const ItemOutcome& item)
{
    return item.error == ERROR_SUCCESS;
}

// Notes the error of a failed call, unless an earlier error was noted. A call can fail without setting an error. In
// that case ERROR_GEN_FAILURE is noted.
inline void NoteFailure(ItemOutcome& item, DWORD error)
{
    if (IsWhole(item))
        item.error = error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

// Returns true if the run is to stop before this item. In that case the function has reported the item as not reached,
// and the caller must leave the item out.
bool StopsBefore(const ItemKind& kind, const WCHAR* name);

// Reports that a temporary file of the program has replaced a user's file of the same name.
void ReportReplacedFile(const WCHAR* path);

// A temporary file that the program is about to make by calling the platform or src/set. The user can have a file of
// the same name. The program must not use or delete the user's file as its own.
struct TemporaryFile {
    const WCHAR* path;
    bool existed;  // a file existed at the path before the call, or the device couldn't say whether one did
};

TemporaryFile ExpectTemporaryFile(const WCHAR* path);

// Call this function after the call that makes the temporary file. `made` is true if that call has created the file,
// even in place of an old one. Returns true if a file at the path belongs to the program, which may use and delete it.
// If that call has replaced or deleted a file of the user, reports this.
bool IsOwnFile(const TemporaryFile& file, bool made);

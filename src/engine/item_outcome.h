// item_outcome.h - the outcome of the item that a run is working on, and the program's temporary files, for the report
// of items that aren't whole (ce/outcome.h).
#pragma once

#include "set/item_kinds.h"

#include "ce/error.h"
#include "ce/types.h"

struct ItemOutcome {
    DWORD error = ERROR_SUCCESS;  // of the first call that failed
};

inline bool IsWhole(const ItemOutcome& item)
{
    return item.error == ERROR_SUCCESS;
}

// A call can fail without setting an error. The item isn't whole then either.
inline void NoteFailure(ItemOutcome& item, DWORD error)
{
    if (IsWhole(item))
        item.error = error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

// Called before an item. True if the run is to stop: it then leaves the item out, which is reported.
bool StopsBefore(const ItemKind& kind, const WCHAR* name);

// Reports that a temporary file of the program has replaced a file of the user's of the same name.
void ReportReplacedFile(const WCHAR* path);

// A temporary file that a call of the platform or of the set's room is about to make. The user can have a file of the
// same name, which must not be taken for the program's.
struct TemporaryFile {
    const WCHAR* path;
    bool existed;  // before the call
};

TemporaryFile ExpectTemporaryFile(const WCHAR* path);

// Called after the call; `made` says whether the call began a new file. True if a file at the path is the program's, to
// be used and deleted. Reports a file that was replaced.
bool IsOwnFile(const TemporaryFile& file, bool made);

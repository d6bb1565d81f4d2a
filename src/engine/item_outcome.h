// item_outcome.h - what became of the item at hand: the first failure, for the report of items that aren't whole.
#pragma once

#include "ce/error.h"
#include "ce/outcome.h"

struct ItemOutcome {
    DWORD error = ERROR_SUCCESS;  // of the first call that failed
};

inline bool IsWhole(const ItemOutcome& item)
{
    return item.error == ERROR_SUCCESS;
}

// A file of the user's had the name of one of the program's temporary files, which took its place.
inline void ReportReplacedFile(const WCHAR* path)
{
    ReportItem(OutcomeReplaced, OutcomeFile, path, ERROR_SUCCESS);
}

// A failure without a number counts too.
inline void NoteFailure(ItemOutcome& item, DWORD error)
{
    if (IsWhole(item))
        item.error = error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

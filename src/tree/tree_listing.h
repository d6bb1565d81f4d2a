// tree_listing.h - what the tree lists: the items below one that expands, and the filter for files.
#pragma once

#include "engine/options.h"
#include "tree/tree_model.h"

#include "ce/text.h"

// Adds the items below `item`: the names of a kind, or one level of a folder, of which the filter hides some files.
// They show what is marked in the lists. `code` is the TreeCode of `item`; below any other item nothing is added.
// Always 1.
DWORD ListChildren(HTREEITEM item, WORD code);

// Whether gOptions hides the file by its attributes or its date. A file that can't be opened is older than any date.
bool FilterHidesFile(const WCHAR* path, DWORD attributes);

bool IsRomFile(DWORD attributes);

// Calls visit(pattern) with "*.txt" and so on for each extension of gOptions, until it returns false.
template <class Visit>
void ForEachExtensionPattern(const Visit& visit)
{
    ForEachExtension([&](const WCHAR* extension) {
        WCHAR pattern[ExtensionsChars + 2];  // the list comes from the registry: an entry can be as long as the list
        wsprintfW(pattern, u"*.%s", extension);
        return visit(pattern);
    });
}

// tree_listing.h - adds the items below an item that expands, and filters the files.
#pragma once

#include "engine/options.h"
#include "tree/tree_model.h"

#include "ce/text.h"

// Adds the items below `item`, whose TreeCode is `code`. Below the top item of a NamedKind, adds the names of all items
// of this kind. For example, adds the names of the databases below "Databases". Below "Files" or a folder, adds the
// subfolders, and the files that the filter doesn't hide. Below any other item, adds nothing. The picture of an added
// item shows whether the item, or for a folder a file below it, is in the list of marked items (item_kinds.h). Always
// returns 1.
DWORD ListChildren(HTREEITEM item, WORD code);

// Whether gOptions hides the file by its attributes or its date. A file that can't be opened is treated as older than
// any date.
bool FilterHidesFile(const WCHAR* path, DWORD attributes);

bool IsRomFile(DWORD attributes);

// Calls visit(pattern) for each extension of gOptions, until visit returns false. An example of a pattern is "*.txt".
template <class Visit>
void ForEachExtensionPattern(const Visit& visit)
{
    ForEachExtension([&](const WCHAR* extension) {
        WCHAR pattern[ExtensionsChars + 2];  // one extension from the registry can fill the whole list
        wsprintfW(pattern, u"*.%s", extension);
        return visit(pattern);
    });
}

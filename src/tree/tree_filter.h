// tree_filter.h - which files the tree's filter by attribute and date leaves out, for listing and marking alike.
#pragma once

#include "engine/options.h"

#include "ce/text.h"
#include "ce/types.h"

// Whether gOptions hide the file. A file that can't be opened counts as older than any date.
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

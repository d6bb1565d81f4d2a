// tree_filter.h - which files the tree's filter by attribute and date leaves out, for listing and marking alike.
#pragma once

#include "ce/types.h"

// Whether gOptions hide the file. A file that can't be opened counts as older than any date.
bool FilterHidesFile(const WCHAR* path, DWORD attributes);

bool IsRomFile(DWORD attributes);

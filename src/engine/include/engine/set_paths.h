// set_paths.h - returns the paths of a set's files on a storage (docs/format.md, "Names on the storage").
#pragma once

#include "ce/types.h"

// The sets of a storage have numbers from 1 to 99.
inline constexpr DWORD FirstSetNumber = 1;
inline constexpr DWORD LastSetNumber = 99;

// `root` is the path of the storage without a trailing backslash, or empty for the device itself. SetPathsFit returns
// whether the path of each file of a set on this storage has at most 259 characters.
bool SetPathsFit(const WCHAR* root);
void FormatSetFolder(WCHAR (&path)[MAX_PATH], const WCHAR* root);
void FormatListPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
void FormatDataPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
// The path of the file with the checksums of a set (docs/archive.md).
void FormatSumsPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
void FormatLogPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
// The path of the temporary stream (backup_entry.h).
void FormatTemporaryPath(WCHAR (&path)[MAX_PATH], const WCHAR* root);

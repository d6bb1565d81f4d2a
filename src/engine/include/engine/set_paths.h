// set_paths.h - the names of a set's files on a storage (docs/format.md, "Names on the storage").
#pragma once

#include "ce/types.h"

// A storage holds sets 1 to 99.
inline constexpr DWORD FirstSetNumber = 1;
inline constexpr DWORD LastSetNumber = 99;

// `root` is a folder without a trailing backslash, or empty for the main device.
bool SetPathsFit(const WCHAR* root);
void FormatSetFolder(WCHAR (&path)[MAX_PATH], const WCHAR* root);
void FormatListPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
void FormatDataPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
// The checksums that `quillbox-set seal` made of a set.
void FormatSumsPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
void FormatLogPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number);
// The path of the temporary stream.
void FormatTemporaryPath(WCHAR (&path)[MAX_PATH], const WCHAR* root);

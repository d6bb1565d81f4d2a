// texts.h - declares the texts of the program's string table (res/quillbox.rc): their numbers, and the call that loads
// one. The call and the buffers for its result are defined in shell/string_table.cpp.
#pragma once

#include "ce/types.h"

// The length of the longest text with its NUL, in characters.
inline constexpr DWORD TextChars = 260;

// A text whose id contains "Format" is a format string for a name or for numbers.
enum TextId : UINT {
    TextFileFormat = 114,
    TextFileExistsFormat = 115,
    TextRestoredCountFormat = 116,
    TextRestoringDatabases = 117,
    TextDatabaseFormat = 118,
    TextRegistry = 119,
    TextRegistryRestored = 120,
    TextRestore = 121,
    TextNoSetFound = 122,
    TextSelectSet = 123,
    TextNothingToBackUp = 124,
    TextCommentFormat = 125,
    TextMainDevice = 126,
    TextSelectStorage = 127,
    TextBackingUpFiles = 128,
    TextOverrideFormat = 129,
    TextBackedUpCountFormat = 130,
    TextDatabases = 131,
    TextConstructFileList = 132,
    TextConstructDatabaseList = 133,
    TextComputingList = 134,
    TextDatabaseExistsFormat = 135,
    TextNothingSelected = 136,
    TextFileRowFormat = 137,
    TextDatabaseRowFormat = 138,
    TextSelectItems = 139,
    TextFullRestore = 140,
    TextRestoringFiles = 141,
    TextWarning = 142,
    TextRestoreSelection = 143,
    TextNothingToRestore = 144,
};

// Two scratch buffers, so that two texts can be in use at the same time.
extern WCHAR gTextA[TextChars];
extern WCHAR gTextB[TextChars];

// Copies text `id` into `scratch`, which is gTextA or gTextB, and returns `scratch`. If there is no such text,
// `scratch` is empty. The result is valid until the next LoadText into the same buffer.
WCHAR* LoadText(UINT id, WCHAR (&scratch)[TextChars]);

// options.h - declares the settings of the program (docs/format.md, "Options"). Backups, restores and the tree read the
// settings. The dialogs and the commands change them. The window loads them at the start and saves them at the end
// (shell/options_store.cpp).
#pragma once

#include "ce/text.h"
#include "ce/types.h"

inline constexpr DWORD ExtensionsChars = 260;

// What a restore does with a file that exists on the device. The values are the ids of radio buttons of the options
// dialog.
inline constexpr WORD RestoreModeReplace = 1023;
inline constexpr WORD RestoreModeSkip = 1024;
inline constexpr WORD RestoreModeAsk = 1025;

// The registry stores the bytes of this structure: 568 bytes, little-endian. So the layout must not change.
struct Options {
    WORD restoreMode;
    WORD reserved1;
    DWORD deleteBackedUp;
    DWORD verifyBackup;  // stored and shown, but without effect
    DWORD generateLog;
    WCHAR extensions[ExtensionsChars];  // texts with NULs, then an empty text; the dialog allows 3 characters each
    FILETIME newerThan;                 // 0: never set
    DWORD newerThanOn;
    DWORD extensionFilterOn;
    DWORD hideByAttribute;  // 1 exactly when hiddenAttributes isn't 0
    DWORD hiddenAttributes;
    WORD maxBackupSizeMb;  // stored and shown, but without effect
    WORD reserved2;
    DWORD showRomFiles;
};

static_assert(sizeof(Options) == 568);
static_assert(offsetof(Options, extensions) == 16 && offsetof(Options, newerThan) == 536);
static_assert(offsetof(Options, maxBackupSizeMb) == 560 && offsetof(Options, showRomFiles) == 564);

// Only the main window's thread uses this variable.
extern Options gOptions;

// Calls visit(extension) for each text in gOptions.extensions, in their order, until visit returns false.
template <class Visit>
void ForEachExtension(const Visit& visit)
{
    const WCHAR* end = gOptions.extensions + ExtensionsChars;
    const WCHAR* extension = gOptions.extensions;
    while (extension < end && *extension && visit(extension))
        extension += wcslen(extension) + 1;
}

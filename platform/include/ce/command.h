// ce/command.h - the program's runs without its windows, for a host that has read a command from a shell or a timer.
//
// Defined by the program. The host opens the device, calls BeginCommand once and then prepares and performs one run.
// Preparing finds out what the run has to do and changes nothing; performing does it. In between the host can tell the
// user what is ahead. What a run leaves out is reported as in a window (ce/outcome.h), and its progress too
// (ce/progress.h). The program's main thread only.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// Files, databases and the registry, one number each.
struct ItemCounts {
    DWORD files = 0;
    DWORD databases = 0;
    DWORD registries = 0;
};

// What a run has ahead.
struct RunPlan {
    bool refused = false;     // the run can't be performed
    std::u16string sentence;  // why it is refused; empty if the reason was reported by ce/outcome.h
    ItemCounts items;
    std::uint64_t bytes =
        0;  // of the items before a backup, of their streams before a restore; 0 for one of unknown size
    // A restore only: what the device has already.
    ItemCounts existing;
    std::u16string firstExistingFile;
    std::u16string firstExistingDatabase;
};

// `instance` is that of WinMain.
void BeginCommand(HINSTANCE instance);

// Whether a set can be stored there: the path is that of a card, or empty for the device itself.
bool IsStorage(const std::u16string& path);

struct BackupRequest {
    // All that the device has of a kind. The filter of the window has no effect.
    bool files = false;
    bool databases = false;
    bool registry = false;
    // Single items in addition: files, and folders with all below them, by their paths, which begin with a backslash.
    std::vector<std::u16string> paths;
    std::vector<std::u16string> databaseNames;

    std::u16string storage;         // the card's path, which begins with a backslash; empty for the device itself
    bool leavesStorageOut = false;  // nothing below the storage is an item, whatever its kind of folder
    std::u16string comment;
    DWORD replaced = 0;  // number of the set to replace; 0 for the first number that is free
    bool deletesSources = false;
    bool writesLog = false;
    bool verifies = false;   // reads the set back and compares it with what was read from the device
    bool onlyPlans = false;  // the backup is prepared, but not performed
};

// Refused if the storage doesn't exist or has no free number, or if an item doesn't exist, or there is none.
RunPlan PrepareBackup(const BackupRequest& request);

// The number of the set that was made; 0 if none was.
DWORD PerformBackup();

enum class Existing { Replace, Skip, Ask };

struct RestoreRequest {
    std::u16string listPath;
    bool everything = true;             // otherwise only the items that are named
    std::vector<std::u16string> paths;  // files, and folders with all below them
    std::vector<std::u16string> databaseNames;
    bool registry = true;
    Existing files = Existing::Ask;
    // Asked for each database that exists, and for each file with Existing::Ask.
    std::function<bool(const WCHAR* path)> mayReplaceFile;
    std::function<bool(const WCHAR* name)> mayReplaceDatabase;
};

// Refused if the list can't be read, or if the set lacks an item that is named, or has none.
RunPlan PrepareRestore(const RestoreRequest& request);

// `files`, which can depend on the plan, replaces that of the request.
void PerformRestore(Existing files);

struct SetSummary {
    std::u16string listPath;
    std::u16string comment;  // without the program's own lines before it
    FILETIME written;        // UTC: the last write of the list file
    ItemCounts items;
    std::uint64_t bytes = 0;  // of both files
    bool sealed = false;      // there is a file with checksums beside the list
    bool damaged = false;     // the list file can't be read to its end, or there is no data file
};

// The set of a list file; nothing if the file can't be opened.
std::optional<SetSummary> SummaryOfSet(const WCHAR* listPath);

// The sets on one storage, in the order of their numbers, or on all.
std::vector<SetSummary> FindSets(const std::optional<std::u16string>& storage);

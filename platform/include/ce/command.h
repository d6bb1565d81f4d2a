// ce/command.h - lets the host make backups and restores without windows, for a command from a shell or a timer.
//
// The program defines these functions. The host opens the device, calls BeginCommand once, and then prepares and
// performs one run. A Prepare function finds out what the run has to do, and changes nothing. A Perform function does
// it. Before the host calls a Perform function, it can tell the user what the run will do. A run reports the items that
// it leaves out (ce/outcome.h) and its progress (ce/progress.h), like a run in a window. All calls are made on the
// program's main thread.
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

// What a run will do.
struct RunPlan {
    bool refused = false;     // the run can't be performed
    std::u16string sentence;  // why it is refused; empty if the reason was reported by ce/outcome.h
    ItemCounts items;
    std::uint64_t bytes = 0;  // a backup: of the items, a restore: of their streams; an item of unknown size adds 0
    // Only for a restore: the items that exist on the device already.
    ItemCounts existing;
    std::u16string firstExistingFile;
    std::u16string firstExistingDatabase;
};

// `instance` is that of WinMain.
void BeginCommand(HINSTANCE instance);

// Whether a set can be stored at `path`: the path of a card, or empty for the device itself.
bool IsStorage(const std::u16string& path);

struct BackupRequest {
    // Whether all items of the kind are backed up. The filter of the window has no effect.
    bool files = false;
    bool databases = false;
    bool registry = false;
    // Single items in addition: the paths of files and folders, which begin with a backslash. A folder includes
    // everything below it.
    std::vector<std::u16string> paths;
    std::vector<std::u16string> databaseNames;

    std::u16string storage;         // the card's path, which begins with a backslash; empty for the device itself
    bool leavesStorageOut = false;  // no file below the storage is an item, even if the storage is no card
    std::u16string comment;
    DWORD replaced = 0;  // number of the set to replace; 0 for the first number that is free
    bool deletesSources = false;
    bool writesLog = false;
    bool verifies = false;   // reads the set back and compares it with what was read from the device
    bool onlyPlans = false;  // the backup is prepared, but not performed
};

// The plan is refused if the storage doesn't exist or has no free number, if an item doesn't exist, or if there is no
// item.
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
    // mayReplaceDatabase is called for each database that exists on the device. With Existing::Ask, mayReplaceFile is
    // called for each file that exists on the device.
    std::function<bool(const WCHAR* path)> mayReplaceFile;
    std::function<bool(const WCHAR* name)> mayReplaceDatabase;
};

// The plan is refused if the list can't be read, if the set lacks an item that is named, or if the set has no items.
RunPlan PrepareRestore(const RestoreRequest& request);

// `files` replaces RestoreRequest::files, so the host can decide after it has seen the plan.
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

// The summary of the set of a list file. Empty if the file can't be opened.
std::optional<SetSummary> SummaryOfSet(const WCHAR* listPath);

// The sets on one storage, in the order of their numbers. Without `storage`, the sets on all storages.
std::vector<SetSummary> FindSets(const std::optional<std::u16string>& storage);

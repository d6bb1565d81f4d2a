// ce/command.h - lets the host make backups and restores without windows, for a command from a shell or a timer.
//
// The program defines these functions. The host opens the device, calls BeginCommand once, and then prepares and
// performs one run. A Prepare function finds out what the run has to do, and changes nothing. A Perform function
// performs the run. Between the two calls the host can tell the user what the run will do. A run reports the items that
// it leaves out (ce/outcome.h) and its progress (ce/progress.h), like a run in a window. All calls are made on the
// program's main thread.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// The number of files and of databases. `registries` is 1 for the registry, otherwise 0.
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
    std::uint64_t bytes = 0;  // size of a backup's items, or of the streams of a restore; an unknown size counts as 0
    // Only for a restore: the items that exist on the device already.
    ItemCounts existing;
    std::u16string firstExistingFile;
    std::u16string firstExistingDatabase;
};

// Prepares the program for a run without windows. `instance` is the value that WinMain would get.
void BeginCommand(HINSTANCE instance);

// Returns whether a set can be stored at `path`. This is so if `path` is the path of a card, or empty for the device
// itself. A card's path must be short enough for the paths of a set's files.
bool IsStorage(const std::u16string& path);

struct BackupRequest {
    // Whether all items of the kind are backed up. The filter, which hides files in the window's tree, has no effect
    // here.
    bool files = false;
    bool databases = false;
    bool registry = false;
    // Single items that are backed up in addition. A path is that of a file or folder, and begins with a backslash. A
    // folder includes everything below it.
    std::vector<std::u16string> paths;
    std::vector<std::u16string> databaseNames;

    std::u16string storage;         // the card's path, which begins with a backslash; empty for the device itself
    bool leavesStorageOut = false;  // `files` doesn't include the files below `storage`
    std::u16string comment;
    DWORD replaced = 0;  // number of the set to replace; 0 for the first number that is free
    bool deletesSources = false;
    bool writesLog = false;
    bool verifies = false;   // reads the set back and compares it with what was read from the device
    bool onlyPlans = false;  // the backup is prepared, but not performed
};

// Prepares a backup and returns its plan. The plan is refused if the storage doesn't exist, if `replaced` is 0 and the
// storage has no free number, or if there is no set with the number `replaced`. It is also refused if an item doesn't
// exist, or if there is nothing to back up.
RunPlan PrepareBackup(const BackupRequest& request);

// Performs the backup that was prepared last. Returns the number of the new set, or 0 if no set was made.
DWORD PerformBackup();

enum class Existing { Replace, Skip, Ask };

struct RestoreRequest {
    std::u16string listPath;
    bool everything = true;             // otherwise only the items that are named
    std::vector<std::u16string> paths;  // files, and folders with everything below them
    std::vector<std::u16string> databaseNames;
    bool registry = true;
    Existing files = Existing::Ask;
    // mayReplaceDatabase is called for each database that exists on the device. With Existing::Ask, mayReplaceFile is
    // called for each file that exists on the device.
    std::function<bool(const WCHAR* path)> mayReplaceFile;
    std::function<bool(const WCHAR* name)> mayReplaceDatabase;
};

// Prepares a restore and returns its plan. The plan is refused if the list can't be read, if the set lacks an item that
// the request names, or if the set has no items.
RunPlan PrepareRestore(const RestoreRequest& request);

// Performs the restore that was prepared last. `files` replaces RestoreRequest::files, so the host can decide after it
// has seen the plan.
void PerformRestore(Existing files);

struct SetSummary {
    std::u16string listPath;
    std::u16string comment;  // the user's text, without the lines that the program puts in front of it
    FILETIME written;        // UTC: the last write of the list file
    ItemCounts items;
    std::uint64_t bytes = 0;  // size of the list file and the data file
    bool sealed = false;      // there is a file with checksums beside the list
    bool damaged = false;     // the list file can't be read to its end, or there is no data file
};

// Returns the summary of the set to which the list file belongs. Returns nothing if the list file can't be opened.
std::optional<SetSummary> SummaryOfSet(const WCHAR* listPath);

// Returns the sets on one storage, in the order of their numbers. Without `storage`, returns the sets on all storages.
std::vector<SetSummary> FindSets(const std::optional<std::u16string>& storage);

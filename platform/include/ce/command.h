// ce/command.h - makes backups and restores without windows, for a command from a shell or a timer.
//
// The program defines these functions, and the host (the platform's process, which runs the program) calls them. The
// host opens the device and calls BeginCommand once. Then it prepares and performs one run: a backup or a restore.
// Instead of a run, it can only ask about sets (FindSets, SummaryOfSet). A Prepare function finds out what the run has
// to do, and changes nothing. A Perform function performs the run. Between the two calls the host can tell the user
// what the run will do. A run reports its failures (ce/outcome.h) and its progress (ce/progress.h), like a run in a
// window. All calls are made on the program's main thread.
#pragma once

#include "ce/handle.h"
#include "ce/types.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// The number of items of each kind. `registries` is 1 if the registry is among the items, otherwise 0.
struct ItemCounts {
    DWORD files = 0;
    DWORD databases = 0;
    DWORD registries = 0;
};

// What a run will do.
struct RunPlan {
    bool refused = false;     // true: the run can't be performed
    std::u16string sentence;  // why the run is refused; empty if the reason was reported through ce/outcome.h
    ItemCounts items;
    std::uint64_t bytes = 0;  // size of a backup's items, or of a restore's streams in the set; unknown: 0
    // Only for a restore: how many of the files and databases in `items` already exist on the device, the first of
    // these files, and the first of these databases.
    ItemCounts existing;
    std::u16string firstExistingFile;
    std::u16string firstExistingDatabase;
};

// Prepares the program for a run without windows. `instance` is the value that WinMain would get.
void BeginCommand(HINSTANCE instance);

// Returns true if sets can be stored at `path`. An empty `path` means the device itself, where this is always possible.
// Any other `path` must be the path of a card. It must be so short that the paths of all files of a set there fit into
// MAX_PATH.
bool IsStorage(const std::u16string& path);

struct BackupRequest {
    // For each kind, whether all its items are backed up. The filter, which hides files in the window's tree, has no
    // effect here.
    bool files = false;
    bool databases = false;
    bool registry = false;
    // Files, folders and databases that are backed up in addition to the kinds chosen above. Each path begins with a
    // backslash. A folder includes everything below it.
    std::vector<std::u16string> paths;
    std::vector<std::u16string> databaseNames;

    std::u16string storage;         // the card's path, which begins with a backslash; empty for the device itself
    bool leavesStorageOut = false;  // true: `files` doesn't include the files below `storage`
    std::u16string comment;
    DWORD replaced = 0;  // number of the set to replace; 0: the set gets the first free number
    bool deletesSources = false;
    bool writesLog = false;
    bool verifies = false;   // reads the set back and compares it with what was read from the device
    bool onlyPlans = false;  // the backup is prepared, but not performed
};

// Prepares a backup and returns its plan. The plan is refused if IsStorage returns false for the storage, if `replaced`
// is 0 and the storage has no free number, or if `replaced` isn't 0 and there is no set with this number. It is also
// refused if `paths` or `databaseNames` contains an item that doesn't exist, or if there is nothing to back up.
RunPlan PrepareBackup(const BackupRequest& request);

// Performs the backup that was prepared last. Returns the number of the new set, or 0 if no set was made.
DWORD PerformBackup();

enum class Existing { Replace, Skip, Ask };

struct RestoreRequest {
    std::u16string listPath;
    bool everything = true;             // true: all files and databases of the set; false: only the named ones
    std::vector<std::u16string> paths;  // files, and folders with everything below them
    std::vector<std::u16string> databaseNames;
    bool registry = true;
    Existing files = Existing::Ask;
    // These functions return true if the restore may replace the item. mayReplaceDatabase is called for each database
    // of the restore that already exists on the device. With Existing::Ask, mayReplaceFile is called in the same way
    // for each file.
    std::function<bool(const WCHAR* path)> mayReplaceFile;
    std::function<bool(const WCHAR* name)> mayReplaceDatabase;
};

// Prepares a restore and returns its plan. The plan is refused if the list can't be read, if the set lacks an item that
// the request names, or if the request selects none of the set's items.
RunPlan PrepareRestore(const RestoreRequest& request);

// Performs the restore that was prepared last. `files` replaces RestoreRequest::files. So the host can first read the
// plan of PrepareRestore, and then choose how to treat existing files.
void PerformRestore(Existing files);

struct SetSummary {
    std::u16string listPath;
    std::u16string comment;  // the user's text, without the lines that the program puts in front of it
    FILETIME written;        // UTC: the last write of the list file
    ItemCounts items;
    std::uint64_t bytes = 0;  // size of the list file and the data file
    bool sealed = false;      // there is a file with checksums beside the list
    bool damaged = false;  // the list file can't be read or has a fault (set/list_reader.h), or there is no data file
};

// Returns the summary of the set to which the list file belongs. Returns nothing if the list file can't be opened.
std::optional<SetSummary> SummaryOfSet(const WCHAR* listPath);

// Returns the sets on `storage`, in the order of their numbers. An empty path means the device itself. If `storage` has
// no value, returns the sets on all storages.
std::vector<SetSummary> FindSets(const std::optional<std::u16string>& storage);

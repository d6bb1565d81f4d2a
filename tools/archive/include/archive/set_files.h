// set_files.h - finds the files of a set on the host (the Linux system), and opens them with the platform's calls.
#pragma once

#include "ce/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace archive {

struct SetFiles {
    std::string folder;    // on the host
    std::string listName;  // name in the folder
    std::string dataName;
    std::string sumName;  // of the file with the checksums (seal.h), which need not exist

    // The path of `folder` on the platform, if the program has mounted this folder already. If the path is empty,
    // opening the set mounts the folder.
    std::u16string shownFolder = {};
};

bool isSameWithoutCase(std::string_view left, std::string_view right);

// True if the name has the extension of a list file, in capitals or small letters.
bool isListFile(std::string_view name);

// The names in a folder of the host. They are read once, when they are first needed.
class FolderNames {
public:
    explicit FolderNames(std::string folder) : folder_(std::move(folder)) {}

    const std::string& folder() const { return folder_; }
    const std::vector<std::string>& sorted();
    // True if the folder couldn't be read to its end, so it may have more names.
    [[nodiscard]] bool readFailed();
    const std::string& reason() const { return reason_; }  // of the failure
    // Returns the wanted name if the folder has it. Otherwise returns the first name that differs only in case, or
    // nothing.
    std::optional<std::string> like(const std::string& wanted);

private:
    void read();

    std::string folder_;
    bool isRead_ = false;
    bool readFailed_ = false;
    std::string reason_;
    std::vector<std::string> names_;
    std::unordered_map<std::u16string, std::string> withoutCase_;
};

// Returns the set of `argument`, which is the path of a list file or of a data file, or that path without the
// extension. The names on a card are in capitals or in small letters, depending on how the card is mounted. So if no
// file has the name in `argument`, the function uses a file whose name differs only in case. Returns nothing if there
// is no list file.
std::optional<SetFiles> findSet(const std::string& argument);
// Returns the set of the list file `listName` in the folder, or nothing if there is no such list file. A FolderNames
// reads its folder at most once, so use the same object for all sets of a folder.
std::optional<SetFiles> findSet(FolderNames& folder, const std::string& listName);

// Finds a data file whose list file need not exist. If `path` has the extension of a data file, the result also
// contains the names of the list file and of the file with the checksums, in the same folder. For any other extension
// these two names are empty. Returns nothing if `path` isn't a regular file.
std::optional<SetFiles> findData(const std::string& path);

// Returns the files of a set that is to be made. `stem` is the path of its list file or data file, with or without the
// extension.
SetFiles newSet(const std::string& stem);

// Returns a new name for an entry of the root folder. Nobody can guess the name, so no path in a hostile set can lead
// to the entry.
std::u16string unguessableName();

// The paths of the set's files on the platform.
struct MountedSet {
    std::u16string folder;  // of the set, without a backslash at its end
    std::u16string listPath;
    std::u16string dataPath;
    std::u16string sumPath;
};

// Returns the paths of the set's files on the platform. If `files.shownFolder` is set, the program has mounted the
// set's folder already. Otherwise the function mounts this folder in the platform's root folder under an unguessable
// name. If the platform has no root folder yet, the host folder `root` first becomes the root folder. Returns nothing
// if a folder can't be opened.
std::optional<MountedSet> mountSet(const SetFiles& files, const std::string& root);

// The constructor calls mountSet(). The destructor removes all mounts, unless another SetMount that mounted a folder
// still exists. If the set has a `shownFolder`, its SetMount neither adds nor removes mounts.
class SetMount {
public:
    SetMount(const SetFiles& files, const std::string& root);
    SetMount(const SetMount&) = delete;
    SetMount& operator=(const SetMount&) = delete;
    ~SetMount();

    explicit operator bool() const { return set_.has_value(); }
    const MountedSet& operator*() const { return *set_; }

private:
    static inline int mounted_ = 0;

    std::optional<MountedSet> set_;
    bool mounts_;
};

// A file that was opened with the platform's calls. The destructor closes it.
class OpenFile {
public:
    OpenFile(const std::u16string& path, DWORD access, DWORD creation);
    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&& other) noexcept;
    ~OpenFile();

    bool isOpen() const;
    DWORD error() const { return error_; }  // of the opening, if it failed
    HANDLE handle() const { return handle_; }
    std::uint64_t size() const;
    [[nodiscard]] bool close();  // false if a write failed after it was reported as successful

private:
    HANDLE handle_;
    DWORD error_;
};

}  // namespace archive

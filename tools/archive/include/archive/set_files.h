// set_files.h - finds the two files of a set on the host, and opens them through the platform's name space.
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

    // The path of the folder in the name space, if a program shows it there already. Empty: the folder is mounted when
    // the set is opened.
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
    // The folder may have more names.
    [[nodiscard]] bool readFailed();
    const std::string& reason() const { return reason_; }  // of the failure
    // The wanted name if the folder has it, otherwise the first one that differs from it only in case.
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

// `argument` is the path of a list file or of a data file, or that path without the extension. If there is no file of
// this name, a file is taken whose name differs only in case, because the names on a card are in capitals or in small
// letters, depending on how it is mounted. Nothing if there is no list file.
std::optional<SetFiles> findSet(const std::string& argument);
// The set of this list file in the folder. The folder is read at most once for all its sets.
std::optional<SetFiles> findSet(FolderNames& folder, const std::string& listName);

// A data file whose list need not exist, and the file with the checksums beside it. Its name may have any ending; then
// there are no checksums. Nothing if it isn't a file.
std::optional<SetFiles> findData(const std::string& path);

// The files of a set that is to be made: `stem` is the path of its list or data file, also without the ending.
SetFiles newSet(const std::string& stem);

// A new name in the root. A hostile set can't contain it, because it can't be guessed.
std::u16string unguessableName();

// The paths of the set's files in the name space.
struct MountedSet {
    std::u16string folder;  // of the set, without a backslash at its end
    std::u16string listPath;
    std::u16string dataPath;
    std::u16string sumPath;
};

// Makes the host's folder `root` the root of the name space unless there is one, and mounts the set's folder in it
// under an unguessable name, unless the name space shows it already. Nothing if a folder can't be opened, or a file's
// name can't be a name on a device.
std::optional<MountedSet> mountSet(const SetFiles& files, const std::string& root);

// Mounts a set as mountSet() does. When the last object is destroyed, all mounts are removed. A program that shows the
// folders of its sets keeps its mounts.
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

// An open file of the name space. The destructor closes it.
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

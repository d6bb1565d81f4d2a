// set_files.h - finds the two files of a set on the host and makes them files of the platform's name space.
#pragma once

#include "ce/types.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillbox_set {

struct SetFiles {
    std::string folder;    // on the host
    std::string listName;  // names in it
    std::string dataName;
};

[[nodiscard]] bool isSameWithoutCase(std::string_view left, std::string_view right);

// By its ending, in any case.
[[nodiscard]] bool isListFile(std::string_view name);

// `argument` is the path of a list file, of a data file, or of both without their ending. Where there is no file of
// this very name, one that differs by case alone is taken: a card's names come in capitals or small letters as it is
// mounted. Nothing if there is no list file.
[[nodiscard]] std::optional<SetFiles> findSet(const std::string& argument);

// A name for the root that nobody who wrote a set can know.
[[nodiscard]] std::u16string unguessableName();

// Where the set's files are in the name space.
struct MountedSet {
    std::u16string folder;  // name of the set's folder in the root, an unguessable one
    std::u16string listPath;
    std::u16string dataPath;
};

// Makes `root` the root of the name space and mounts the set's folder in it. Nothing if a folder can't be opened or a
// name can't be a name of the device.
[[nodiscard]] std::optional<MountedSet> mountSet(const SetFiles& files, const std::string& root);

// A file of the name space that is closed when it goes.
class OpenFile {
public:
    OpenFile(const std::u16string& path, DWORD access, DWORD creation);
    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&& other) noexcept;
    ~OpenFile();

    [[nodiscard]] bool isOpen() const;
    [[nodiscard]] HANDLE handle() const { return handle_; }
    [[nodiscard]] std::uint64_t size() const;
    bool close();  // false if bytes were lost that were reported as written

private:
    HANDLE handle_;
};

}  // namespace quillbox_set

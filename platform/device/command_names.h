// command_names.h - finds out which storage, set or items the words of a command line mean.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

// Where a set is stored. A word that contains a slash means a folder of the host, and so do the words "." and "..". Any
// other word means a path on the device. For "Main device" this path is empty.
struct NamedStorage {
    std::optional<std::filesystem::path> folder;
    std::u16string path;
};
[[nodiscard]] NamedStorage storageNamed(const std::string& word);

// The set that a word names. A word that begins with a backslash is the path of a list file on the device. Any other
// word is a path on the host.
struct NamedSet {
    std::optional<std::filesystem::path> listFile;
    std::u16string path;
    std::string refusal;  // a sentence if there is no such set on the host
};
[[nodiscard]] NamedSet setNamed(const std::string& word);

struct NamedItems {
    std::vector<std::u16string> paths;  // files and folders
    std::vector<std::u16string> databases;
    bool registry = false;
};
// A word that begins with a slash or a backslash names a file or folder. "registry" names the registry, and any other
// word names a database.
[[nodiscard]] NamedItems itemsNamed(const std::vector<std::string>& words);

}  // namespace platform::device

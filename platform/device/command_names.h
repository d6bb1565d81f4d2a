// command_names.h - how the words of a command name storages, sets and items.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

// Where a set is stored: a folder of the host, if the word has a slash, otherwise a path on the device, which is empty
// for "Main device".
struct NamedStorage {
    std::optional<std::filesystem::path> folder;
    std::u16string path;
};
[[nodiscard]] NamedStorage storageNamed(const std::string& word);

// The set of a list file: on the host or, with a word that begins with a backslash, on the device.
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
// A word that begins with a slash or a backslash names a file or folder, and "registry" the registry.
[[nodiscard]] NamedItems itemsNamed(const std::vector<std::string>& words);

}  // namespace platform::device

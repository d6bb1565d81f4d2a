// device_files.h - lists and opens the files in the object store of a device. The device itself isn't opened. All
// functions except inRom() use only calls of the host (the Linux system).
#pragma once

#include "archive/name_set.h"
#include "host/descriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <sys/stat.h>

namespace quillbox_device {

// These values show whether a file was changed.
struct Stamp {
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t written = 0;  // time of the last write, in nanoseconds
    std::int64_t changed = 0;  // time of the last change of content or attributes, in nanoseconds

    bool operator==(const Stamp&) const = default;
};
Stamp stampOf(const struct stat& status);

// A file, or a folder that can't be read.
struct DeviceFile {
    std::string path;  // relative to the folder of the object store
    Stamp stamp;
    std::string fault;  // why no set can hold it, such as "it is a link or no file"; empty for a regular file
};

// An index of the device's files. The index takes some 200 bytes of memory for each file.
class DeviceFiles {
public:
    // Reads all folders. Throws a Failure if the folder of the object store can't be opened. If any other folder can't
    // be read, all() has an entry for it, and the entry's `fault` says why.
    explicit DeviceFiles(const std::filesystem::path& device);

    const std::vector<DeviceFile>& all() const { return files_; }
    // Finds a file by its full path on the device, written as in the list of a set. Returns the file's index in all(),
    // or nothing if there is no such file.
    std::optional<std::size_t> find(std::u16string_view name) const;

    // Returns the indices in all() of the files in ROM (FILE_ATTRIBUTE_INROM), except those for which `isCovered` is
    // true. Uses the device's file layer, so the caller must not have a set mounted during the call. A file that the
    // file layer can't find isn't in ROM.
    std::vector<std::size_t> inRom(const std::vector<bool>& isCovered) const;

    // Opens the file with this index in all() for reading. Doesn't follow a link.
    platform::host::Descriptor open(std::size_t file) const;

    // Reads all folders again. Returns the paths of files that were created, changed or deleted since the constructor
    // ran.
    std::vector<std::string> changedSince() const;

private:
    void readFolder(const std::string& path, const std::u16string& name, std::vector<std::string>& waiting);

    platform::host::Descriptor root_;
    std::filesystem::path store_;
    std::vector<DeviceFile> files_;
    std::unordered_map<archive::NameHash, std::size_t, archive::FirstHalf> index_;
};

}  // namespace quillbox_device

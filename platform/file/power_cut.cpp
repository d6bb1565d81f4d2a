// power_cut.cpp - a list of what isn't on the disk yet, and its removal.
#include "power_cut.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace platform::file {

namespace {

using Inode = std::pair<dev_t, ino_t>;

struct TouchedFile {
    int keptOpen = -1;  // by O_PATH, so that it stands in the way of no lease
    std::uint64_t flushedSize = 0;
};

struct MadeEntry {
    Inode folder;
    std::string path;  // by the descriptor kept open
    int keptOpen = -1;
};

struct Unflushed {
    std::mutex mutex;
    std::map<Inode, TouchedFile> files;
    std::vector<MadeEntry> entries;
};

Unflushed& unflushed()
{
    static Unflushed only;
    return only;
}

std::string pathOf(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

Inode inodeOf(const struct stat& status)
{
    return {status.st_dev, status.st_ino};
}

void remember(Unflushed& known, int file, std::uint64_t flushedSize, const struct stat& status)
{
    const auto [place, isNew] = known.files.try_emplace(inodeOf(status));
    if (isNew) {
        place->second.keptOpen = ::open(pathOf(file).c_str(), O_PATH | O_CLOEXEC);
        place->second.flushedSize = flushedSize;
    }
}

}  // namespace

void noteTouched(int file)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    struct stat status = {};
    if (::fstat(file, &status) == 0)
        remember(known, file, static_cast<std::uint64_t>(status.st_size), status);
}

void noteCut(int file, std::uint64_t size)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    struct stat status = {};
    if (::fstat(file, &status) != 0)
        return;
    const auto touched = known.files.find(inodeOf(status));
    if (touched != known.files.end())
        touched->second.flushedSize = std::min(touched->second.flushedSize, size);
}

void noteMade(int folder, const char* path)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    const std::filesystem::path whole(path);
    const std::string parent = whole.has_parent_path() ? whole.parent_path().string() : ".";
    const int keptOpen = ::openat(folder, parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    struct stat status = {};
    if (keptOpen >= 0 && ::fstat(keptOpen, &status) == 0)
        known.entries.push_back({inodeOf(status), whole.filename().string(), keptOpen});
}

void noteFlushed(int fileOrFolder)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    struct stat status = {};
    if (::fstat(fileOrFolder, &status) != 0)
        return;
    if (S_ISDIR(status.st_mode)) {
        std::erase_if(known.entries, [&](const MadeEntry& entry) {
            const bool flushed = entry.folder == inodeOf(status);
            if (flushed)
                ::close(entry.keptOpen);
            return flushed;
        });
    } else if (const auto touched = known.files.find(inodeOf(status)); touched != known.files.end()) {
        touched->second.flushedSize = static_cast<std::uint64_t>(status.st_size);
    }
}

void takeBackUnflushed()
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    for (const auto& [inode, file] : known.files) {
        struct stat status = {};
        const std::string path = pathOf(file.keptOpen);
        if (::stat(path.c_str(), &status) == 0 && static_cast<std::uint64_t>(status.st_size) > file.flushedSize)
            (void)::truncate(path.c_str(), static_cast<off_t>(file.flushedSize));
    }
    for (const MadeEntry& entry : known.entries) {
        std::error_code ignored;  // deleted since: then there is nothing to take back
        std::filesystem::remove_all(pathOf(entry.keptOpen) + "/" + entry.path, ignored);
    }
}

void forgetUnflushed()
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    for (const auto& [inode, file] : known.files)
        ::close(file.keptOpen);
    for (const MadeEntry& entry : known.entries)
        ::close(entry.keptOpen);
    known.files.clear();
    known.entries.clear();
}

}  // namespace platform::file

#include "power_cut.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform::file {

namespace {

using Inode = std::pair<dev_t, ino_t>;

struct ChangedFile {
    int keptOpen = -1;  // with O_PATH, since such a descriptor prevents no lease
    std::uint64_t flushedSize = 0;
};

struct Name {
    Inode folder;
    std::string name;
    int keptOpen = -1;  // a descriptor of the folder

    std::string path() const { return "/proc/self/fd/" + std::to_string(keptOpen) + "/" + name; }
    bool operator==(const Name& other) const { return folder == other.folder && name == other.name; }
};

struct ChangedEntry {
    Name now;
    std::optional<Name> before;  // its name on the disk; empty for a new entry
};

struct Unflushed {
    std::mutex mutex;
    std::map<Inode, ChangedFile> files;
    std::vector<ChangedEntry> entries;  // in the order of the calls
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
    const auto [entry, isNew] = known.files.try_emplace(inodeOf(status));
    if (isNew) {
        entry->second.keptOpen = ::open(pathOf(file).c_str(), O_PATH | O_CLOEXEC);
        entry->second.flushedSize = flushedSize;
    }
}

Name nameOf(int folder, const char* path)
{
    const std::filesystem::path whole(path);
    const std::string parent = whole.has_parent_path() ? whole.parent_path().string() : ".";
    Name name{{}, whole.filename().string(), ::openat(folder, parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    struct stat status = {};
    if (name.keptOpen >= 0 && ::fstat(name.keptOpen, &status) == 0)
        name.folder = inodeOf(status);
    return name;
}

void closeFolders(const ChangedEntry& entry)
{
    ::close(entry.now.keptOpen);
    if (entry.before)
        ::close(entry.before->keptOpen);
}

template <class Chosen>
void forgetEntries(Unflushed& known, const Chosen& chosen)
{
    std::erase_if(known.entries, [&](const ChangedEntry& entry) {
        const bool isForgotten = chosen(entry);
        if (isForgotten)
            closeFolders(entry);
        return isForgotten;
    });
}

void undo(const ChangedEntry& entry)
{
    std::error_code ignored;  // the entry may have been deleted since
    if (!entry.before)
        std::filesystem::remove_all(entry.now.path(), ignored);
    else
        (void)::renameat2(entry.now.keptOpen, entry.now.name.c_str(), entry.before->keptOpen,
                          entry.before->name.c_str(), RENAME_NOREPLACE);
}

}  // namespace

void noteChange(int file)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    struct stat status = {};
    if (::fstat(file, &status) == 0)
        remember(known, file, static_cast<std::uint64_t>(status.st_size), status);
}

void noteResize(int file, std::uint64_t size)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    struct stat status = {};
    if (::fstat(file, &status) != 0)
        return;
    const auto changed = known.files.find(inodeOf(status));
    if (changed != known.files.end())
        changed->second.flushedSize = std::min(changed->second.flushedSize, size);
}

void noteMaking(int folder, const char* path)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    known.entries.push_back({nameOf(folder, path), std::nullopt});
}

void noteMove(int folder, const char* name, int newFolder, const char* newName)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    ChangedEntry moved{nameOf(newFolder, newName), nameOf(folder, name)};
    const auto earlier = std::ranges::find(known.entries, *moved.before, &ChangedEntry::now);
    if (earlier == known.entries.end()) {
        known.entries.push_back(std::move(moved));
        return;
    }
    std::swap(earlier->now, moved.now);
    closeFolders(moved);
    if (earlier->before == earlier->now)  // moved back
        forgetEntries(known, [](const ChangedEntry& entry) { return entry.before == entry.now; });
}

void noteFlush(int fileOrFolder)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    struct stat status = {};
    if (::fstat(fileOrFolder, &status) != 0)
        return;
    if (S_ISDIR(status.st_mode)) {
        forgetEntries(known, [&](const ChangedEntry& entry) { return entry.now.folder == inodeOf(status); });
    } else if (const auto changed = known.files.find(inodeOf(status)); changed != known.files.end()) {
        changed->second.flushedSize = static_cast<std::uint64_t>(status.st_size);
    }
}

void noteFileSystemFlush(int fileOrFolder)
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    struct stat flushed = {};
    if (::fstat(fileOrFolder, &flushed) != 0)
        return;
    for (auto& [inode, file] : known.files) {
        struct stat status = {};
        if (inode.first == flushed.st_dev && ::fstat(file.keptOpen, &status) == 0)
            file.flushedSize = static_cast<std::uint64_t>(status.st_size);
    }
    forgetEntries(known, [&](const ChangedEntry& entry) { return entry.now.folder.first == flushed.st_dev; });
}

void undoUnflushed()
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    for (const auto& [inode, file] : known.files) {
        struct stat status = {};
        const std::string path = pathOf(file.keptOpen);
        if (::stat(path.c_str(), &status) == 0 && static_cast<std::uint64_t>(status.st_size) > file.flushedSize)
            (void)::truncate(path.c_str(), static_cast<off_t>(file.flushedSize));
    }
    std::for_each(known.entries.rbegin(), known.entries.rend(), undo);
}

void forgetUnflushed()
{
    Unflushed& known = unflushed();
    const std::lock_guard lock(known.mutex);
    for (const auto& [inode, file] : known.files)
        ::close(file.keptOpen);
    forgetEntries(known, [](const ChangedEntry&) { return true; });
    known.files.clear();
}

}  // namespace platform::file

#include "open_files.h"

#include "host/error.h"
#include "parent_folder.h"

#include "ce/error.h"
#include "ce/file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace platform::file {

// The table is never destroyed, because a file can be closed after the static objects of the file layer are destroyed.
OpenFiles& OpenFiles::instance()
{
    static OpenFiles& only = *std::make_unique<OpenFiles>().release();
    return only;
}

bool OpenFiles::conflicts(const FileKey& key, const Sharing& sharing) const
{
    const Entry* const open = find(key);
    if (!open || sharing.access == 0)
        return false;
    return ((sharing.access & GENERIC_READ) != 0 && open->forbidReading > 0) ||
           ((sharing.access & GENERIC_WRITE) != 0 && open->forbidWriting > 0) ||
           ((sharing.share & FILE_SHARE_READ) == 0 && open->readers > 0) ||
           ((sharing.share & FILE_SHARE_WRITE) == 0 && open->writers > 0);
}

std::shared_ptr<SharedFile> OpenFiles::enter(const FileKey& key, const Sharing& sharing, MountedFolder& mount,
                                             std::uint64_t size)
{
    Entry& entry = findOrAdd(key);
    if (!entry.file)
        entry.file = std::make_shared<SharedFile>(mount, key, size);
    entry.count(sharing, 1);
    return entry.file;
}

void OpenFiles::noteMade(const HostStatus& status)
{
    made_[nextMade_] = {keyOf(status), objectId(status)};
    nextMade_ = (nextMade_ + 1) % made_.size();
}

bool OpenFiles::wasMadeHere(const HostStatus& status) const
{
    return std::ranges::find(made_, MadeFile{keyOf(status), objectId(status)}) != made_.end();
}

void OpenFiles::enter(const std::shared_ptr<SharedFile>& temporary, const Sharing& sharing)
{
    Entry& entry = findOrAdd(temporary->key());
    entry.file = temporary;
    entry.count(sharing, 1);
}

DWORD OpenFiles::nameOnHost(const SharedFile& file)
{
    const kernel::MutexLock lock(mutex_);
    for (const auto& nameless : temporaries_.all()) {
        if (nameless.file.get() == &file)
            return giveName(nameless);
    }
    return 0;
}

DWORD OpenFiles::nameOnTheWayTo(const HostPath& path)
{
    return temporaries_.areThere() ? giveNames(temporaries_.onTheWayTo(path)) : 0;
}

DWORD OpenFiles::nameInFolder(const HostPath& folder)
{
    const kernel::MutexLock lock(mutex_);
    return temporaries_.areThere() ? giveNames(temporaries_.inFolder(folder)) : 0;
}

DWORD OpenFiles::nameAll()
{
    const kernel::MutexLock lock(mutex_);
    return giveNames(temporaries_.all());
}

DWORD OpenFiles::withdrawTemporary(const HostPath& path)
{
    if (const auto file = temporaries_.find(path)) {
        if (const DWORD error = giveName({path, file}); error != 0)
            return error;
    }
    temporaries_.withdraw(path);
    return 0;
}

DWORD OpenFiles::giveNames(const std::vector<TemporaryFiles::Nameless>& nameless)
{
    for (const auto& each : nameless) {
        const DWORD error = giveName(each);
        if (error != 0 && error != ERROR_FILE_EXISTS)
            return error;
    }
    return 0;
}

DWORD OpenFiles::giveName(const TemporaryFiles::Nameless& nameless)
{
    const HostPath& path = nameless.path;
    const ParentFolder parent(path);
    temporaries_.expectMade(path);
    Descriptor named(parent.get() < 0 ? parent.get()
                                      : openBelow(parent.get(), path.name(), O_RDWR | O_CREAT | O_EXCL, NewFileMode));
    if (!named)
        return named.get() == -ELOOP ? DWORD{ERROR_FILE_EXISTS} : errorAt(path, parent, named.get());
    HostStatus status = {};
    DWORD error = host::ioError(readStatus(named.get(), "", status));
    if (error == 0) {
        temporaries_.noteMade(path, named.get());
        path.mount->expectChange(deviceOf(status), path.folder());
        const kernel::MutexLock lock(nameless.file->mutex());
        error = nameless.file->moveTo(std::move(named), deviceOf(status));
    }
    if (error != 0) {
        (void)removeFile(parent.get(), path.name());
        return error;
    }
    noteMade(status);
    changeKey(*nameless.file, keyOf(status));
    temporaries_.noteNamed(*nameless.file);
    return 0;
}

void OpenFiles::changeKey(SharedFile& file, const FileKey& key)
{
    if (Entry* const entry = find(file.key()))
        entry->key = key;
    file.setKey(key);
}

void OpenFiles::leave(const SharedFile& file, const Sharing& sharing)
{
    const kernel::MutexLock lock(mutex_);
    Entry* const found = find(file.key());
    if (!found)
        return;
    found->count(sharing, -1);
    if (found->handles != 0)
        return;
    std::swap(*found, files_.back());
    files_.pop_back();
}

std::optional<std::uint64_t> OpenFiles::sizeOfWritten(const FileKey& key)
{
    if (!SharedFile::anyGathers())
        return std::nullopt;
    const kernel::MutexLock lock(mutex_);
    const Entry* const found = find(key);
    if (!found || found->writers == 0)
        return std::nullopt;
    const SharedFile& file = *found->file;
    const kernel::MutexLock fileLock(file.mutex());
    return file.size();
}

void OpenFiles::releaseReserves()
{
    for (const auto& file : everyFile()) {
        const kernel::MutexLock lock(file->mutex());
        (void)file->release();  // a later write to the file returns the error
    }
}

DWORD OpenFiles::writeOutAll(const MountedFolder& mount)
{
    DWORD first = 0;
    for (const auto& file : everyFile()) {
        if (&file->mount() != &mount)
            continue;
        const kernel::MutexLock lock(file->mutex());
        const DWORD error = file->writeOut();
        first = first != 0 ? first : error;
    }
    return first;
}

const OpenFiles::Entry* OpenFiles::find(const FileKey& key) const
{
    const auto found = std::ranges::find(files_, key, &Entry::key);
    return found == files_.end() ? nullptr : &*found;
}

OpenFiles::Entry* OpenFiles::find(const FileKey& key)
{
    const auto found = std::ranges::find(files_, key, &Entry::key);
    return found == files_.end() ? nullptr : &*found;
}

OpenFiles::Entry& OpenFiles::findOrAdd(const FileKey& key)
{
    Entry* const found = find(key);
    return found ? *found : files_.emplace_back(Entry{.key = key, .file = nullptr});
}

std::vector<std::shared_ptr<SharedFile>> OpenFiles::everyFile()
{
    const kernel::MutexLock lock(mutex_);
    std::vector<std::shared_ptr<SharedFile>> all;
    for (const Entry& entry : files_)
        all.push_back(entry.file);
    return all;
}

void OpenFiles::Entry::count(const Sharing& sharing, int step)
{
    handles += step;
    if (sharing.access == 0)
        return;
    readers += (sharing.access & GENERIC_READ) != 0 ? step : 0;
    writers += (sharing.access & GENERIC_WRITE) != 0 ? step : 0;
    forbidReading += (sharing.share & FILE_SHARE_READ) == 0 ? step : 0;
    forbidWriting += (sharing.share & FILE_SHARE_WRITE) == 0 ? step : 0;
}

}  // namespace platform::file

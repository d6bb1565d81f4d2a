#include "open_files.h"

#include "ce/file.h"

#include <algorithm>
#include <utility>

namespace platform::file {

std::shared_ptr<OpenFiles> OpenFiles::instance()
{
    static const auto only = std::make_shared<OpenFiles>();
    return only;
}

bool OpenFiles::conflicts(const FileKey& key, const Sharing& sharing) const
{
    const auto found = files_.find(key);
    if (found == files_.end() || sharing.access == 0)
        return false;
    const Entry& open = found->second;
    return ((sharing.access & GENERIC_READ) != 0 && open.forbidReading > 0) ||
           ((sharing.access & GENERIC_WRITE) != 0 && open.forbidWriting > 0) ||
           ((sharing.share & FILE_SHARE_READ) == 0 && open.readers > 0) ||
           ((sharing.share & FILE_SHARE_WRITE) == 0 && open.writers > 0);
}

std::shared_ptr<SharedFile> OpenFiles::enter(const FileKey& key, const Sharing& sharing,
                                             const std::shared_ptr<MountedFolder>& mount, std::uint64_t size)
{
    Entry& entry = files_[key];
    if (!entry.file)
        entry.file = std::make_shared<SharedFile>(mount, key.device, size);
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

void OpenFiles::keepTemporary(const HostPath& path, const FileKey& key, Descriptor descriptor)
{
    const kernel::MutexLock lock(mutex_);
    temporary_.keep(path, key, std::move(descriptor));
}

void OpenFiles::forgetTemporary()
{
    const kernel::MutexLock lock(mutex_);
    temporary_.forget();
}

void OpenFiles::leave(const FileKey& key, const Sharing& sharing)
{
    const kernel::MutexLock lock(mutex_);
    const auto found = files_.find(key);
    if (found == files_.end())
        return;
    found->second.count(sharing, -1);
    if (found->second.handles == 0)
        files_.erase(found);
}

std::optional<std::uint64_t> OpenFiles::sizeOfWritten(const FileKey& key)
{
    if (!SharedFile::anyGathers())
        return std::nullopt;
    const kernel::MutexLock lock(mutex_);
    const auto found = files_.find(key);
    if (found == files_.end() || found->second.writers == 0)
        return std::nullopt;
    const SharedFile& file = *found->second.file;
    const kernel::MutexLock fileLock(file.mutex());
    return file.size();
}

void OpenFiles::releaseReserves()
{
    for (const auto& file : everyFile()) {
        const kernel::MutexLock lock(file->mutex());
        (void)file->release();  // the file keeps an error for its next call
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

std::vector<std::shared_ptr<SharedFile>> OpenFiles::everyFile()
{
    const kernel::MutexLock lock(mutex_);
    std::vector<std::shared_ptr<SharedFile>> all;
    for (const auto& [key, entry] : files_)
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

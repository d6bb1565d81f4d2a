#include "open_file.h"

#include "attributes.h"
#include "file_stamp.h"
#include "host/error.h"
#include "kernel/troubles.h"
#include "stored_attributes.h"

#include "ce/error.h"

#include <fcntl.h>

#include <limits>
#include <utility>

namespace platform::file {

using host::ioError;

namespace {
constexpr auto MostBytes = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

OpenFile::OpenFile(OpenFiles& table, std::shared_ptr<SharedFile> file, const Sharing& sharing, Descriptor descriptor,
                   HostPath hostPath, const FileStamp& opened)
    : table_(table), file_(std::move(file)), sharing_(sharing), descriptor_(std::move(descriptor)),
      hostPath_(std::move(hostPath)), opened_(opened)
{
}

OpenFile::~OpenFile()
{
    (void)close();  // again, because a write on another thread can buffer bytes after CloseHandle has called it
    // Closes the descriptor before the file leaves the table. In the other order, another thread could open the file
    // between the two steps. That thread would regard the descriptor as a use of the file by another process.
    descriptor_ = Descriptor();
    table_.leave(*file_, sharing_);
}

DWORD OpenFile::close()
{
    if (!mayWrite())
        return 0;
    const kernel::MutexLock lock(file_->mutex());
    const DWORD error = file_->release(descriptor());
    if (error != 0)
        kernel::noteTrouble(kernel::Trouble::Writing, kernel::Troubled::File, path(), error);
    return error;
}

ReadResult OpenFile::read(std::span<std::byte> out)
{
    if (!mayRead())
        return {0, ERROR_ACCESS_DENIED};
    const kernel::MutexLock lock(file_->mutex());
    if (file_->isInMemory()) {
        const std::size_t bytes = file_->readMemory(position_, out);
        position_ += bytes;
        return {bytes, 0};
    }
    if (file_->hasGathered()) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    if (aheadVersion_ != file_->version()) {
        ahead_.forget();
        aheadVersion_ = file_->version();
    }
    const ReadResult result = ahead_.read(descriptor(), position_, out, file_->size(), !othersMayWrite());
    position_ += result.bytes;
    return result;
}

Written OpenFile::write(std::span<const std::byte> bytes)
{
    if (!mayWrite())
        return {0, ERROR_ACCESS_DENIED};
    if (bytes.empty())
        return {};
    kernel::MutexLock lock(file_->mutex());
    if (bytes.size() > MostBytes - position_)
        return {0, ERROR_DISK_FULL};
    Written written = file_->write(descriptor(), position_, bytes);
    position_ += written.bytes;
    if (written.hostIsFull && SharedFile::anyReserves()) {
        // Other files can have reserved disk space that they don't use. This write must not fail for that reason, so
        // releaseReserves gives the space back. releaseReserves locks each file in turn. A thread that holds the lock
        // of one file may not lock another one (except a file that SharedFile::writeAfter has set). So this file is
        // unlocked before the call.
        lock.unlock();
        table_.releaseReserves();
        lock.lock();
        const std::size_t before = written.bytes;
        written = file_->write(descriptor(), position_, bytes.subspan(before));
        position_ += written.bytes;
        written.bytes += before;
    }
    if (written.bytes != 0 && written.bytes < bytes.size())
        file_->noteCut(position_);
    return written;
}

OpenFile::Sought OpenFile::seek(std::int64_t distance, DWORD method)
{
    const kernel::MutexLock lock(file_->mutex());
    if (method == FILE_CURRENT && distance == 0 && file_->hasGathered())
        return {position_, 0};  // only asks for the position: no reason to write out buffered bytes
    std::uint64_t from = 0;
    if (method == FILE_CURRENT) {
        from = position_;
    } else if (method == FILE_END) {
        if (const DWORD error = endOfFile(from); error != 0)
            return {0, error};
    } else if (method != FILE_BEGIN) {
        return {0, ERROR_INVALID_PARAMETER};
    }
    if (distance < 0 && static_cast<std::uint64_t>(-(distance + 1)) + 1 > from)
        return {0, ERROR_NEGATIVE_SEEK};
    const std::uint64_t position = from + static_cast<std::uint64_t>(distance);
    if (position > MostBytes)
        return {0, ERROR_INVALID_PARAMETER};
    // After buffered bytes were lost, a program must be able to move to the end of the intact bytes and cut the file
    // there. In this state writeOut() would return the error of the loss. But hasGathered() is false after a loss, so
    // writeOut() isn't called here.
    if (file_->hasGathered()) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    position_ = position;
    return {position, 0};
}

DWORD OpenFile::endHere()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    if (const DWORD error = placeOnHost(); error != 0)
        return error;
    const kernel::MutexLock lock(file_->mutex());
    return file_->endAt(descriptor(), position_);
}

DWORD OpenFile::flush()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    if (const DWORD error = placeOnHost(); error != 0)
        return error;
    const kernel::MutexLock lock(file_->mutex());
    if (const DWORD error = file_->writeOut(); error != 0)
        return error;
    const DWORD error = flushToHost();
    // If the medium was removed, the call returns ERROR_NOT_READY whatever the flush returned. Even a flush that
    // succeeded may have gone to a file system that was already unmounted.
    return hostPath_.mount->isInPlace() ? error : ERROR_NOT_READY;
}

DWORD OpenFile::flushToHost()
{
    if (const int result = flushToDisk(descriptor()); result < 0)
        return ioError(result);
    // The file's directory entry needs only one flush, because no call renames or deletes a file that is open.
    if (!entriesFlushed_) {
        if (const DWORD error = flushEntries(); error != 0)
            return error;
        entriesFlushed_ = true;
    }
    return 0;
}

DWORD OpenFile::dropFromCache() const
{
    return ioError(dropCached(descriptor_.get()));
}

DWORD OpenFile::handOver()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    if (const DWORD error = placeOnHost(); error != 0)
        return error;
    const kernel::MutexLock lock(file_->mutex());
    return file_->writeOut();
}

DWORD OpenFile::writeAfter(const OpenFile& earlier)
{
    if (!mayWrite() || !earlier.mayWrite())
        return ERROR_ACCESS_DENIED;
    {
        const kernel::MutexLock lock(earlier.file_->mutex());
        if (earlier.file_ == file_ || earlier.file_->isWrittenAfterAnother() || file_->isTemporary())
            return ERROR_INVALID_PARAMETER;
    }
    const kernel::MutexLock lock(file_->mutex());
    file_->writeAfter(earlier.file_);
    return 0;
}

DWORD OpenFile::markUnfinished()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    const kernel::MutexLock lock(file_->mutex());
    if (mayRead() || sharing_.share != 0 || file_->isTemporary())
        return ERROR_INVALID_PARAMETER;
    file_->markUnfinished();
    return 0;
}

DWORD OpenFile::markFinished()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    const kernel::MutexLock lock(file_->mutex());
    return file_->markFinished(descriptor());
}

DWORD OpenFile::stamp(FileStamp& stamp)
{
    if (!mayWrite() && !othersMayWrite() && opened_.inode != 0) {
        stamp = opened_;
        return 0;
    }
    const kernel::MutexLock lock(file_->mutex());
    if (file_->isNameless()) {
        stamp = {};  // no file of the host has this stamp
        stamp.length = file_->size();
        return 0;
    }
    if (const DWORD error = writeOut(); error != 0)
        return error;
    timespec now = {};
    HostStatus status = {};
    if (::clock_gettime(CLOCK_REALTIME, &now) != 0)
        return ERROR_GEN_FAILURE;
    if (const int result = readStatus(descriptor(), "", status); result < 0)
        return ioError(result);
    stamp = stampOf(status, now);
    return 0;
}

DWORD OpenFile::describe(BY_HANDLE_FILE_INFORMATION& information)
{
    if (const DWORD error = placeOnHost(); error != 0)
        return error;
    HostStatus status = {};
    const kernel::MutexLock lock(file_->mutex());
    if (const DWORD error = refreshSize(status); error != 0)
        return error;
    const bool leadingPoint = *hostPath_.name() == '.';
    const StoredAttributes stored = storedAttributes(descriptor(), "", status);
    if (stored.error != 0)
        return ioError(stored.error);
    information.dwFileAttributes = attributesOf(status, stored.bits, leadingPoint);
    information.ftCreationTime = creationTime(status);
    information.ftLastAccessTime = fileTime(status.stx_atime);
    information.ftLastWriteTime = fileTime(status.stx_mtime);
    information.dwVolumeSerialNumber = static_cast<DWORD>(deviceOf(status) ^ (deviceOf(status) >> 20));
    information.nFileSizeHigh = static_cast<DWORD>(status.stx_size >> 32);
    information.nFileSizeLow = static_cast<DWORD>(status.stx_size);
    information.nNumberOfLinks = status.stx_nlink;
    information.nFileIndexHigh = static_cast<DWORD>(status.stx_ino >> 32);
    information.nFileIndexLow = static_cast<DWORD>(status.stx_ino);
    information.dwOID = objectId(status);
    return 0;
}

// Writes out the buffered bytes. If this fails, notes a failed write. Otherwise the failure would be noted only as a
// failed read, because each failure of read, seek, stamp and describe is noted as a failed read (file_calls.cpp).
DWORD OpenFile::writeOut()
{
    const DWORD error = file_->writeOut();
    if (error != 0)
        kernel::noteTrouble(kernel::Trouble::Writing, kernel::Troubled::File, path(), error);
    return error;
}

// Writes out the buffered bytes, then asks the host for the length, which another process may have changed.
DWORD OpenFile::refreshSize(HostStatus& status)
{
    if (const DWORD error = writeOut(); error != 0)
        return error;
    if (const int result = readStatus(descriptor(), "", status); result < 0)
        return ioError(result);
    if (!file_->isUnfinished())  // otherwise the host's size includes the mark
        file_->setSize(status.stx_size);
    status.stx_size = file_->size();
    return 0;
}

// Sets `end` to the length of the file. Asks the host only if another process may have changed the file. No other
// process changes a file that has no name on the host. A handle that only reads, and that doesn't share the file for
// writing, forbids changes by others.
DWORD OpenFile::endOfFile(std::uint64_t& end)
{
    HostStatus status = {};
    const bool isKnown = file_->isNameless() || (!mayWrite() && !othersMayWrite());
    const DWORD error = isKnown ? 0 : refreshSize(status);
    end = file_->size();
    return error;
}

// Flushes the folder of the file and all folders above it, up to the mounted folder. The folders above can be new, too,
// so their own entries may not be on the disk yet.
DWORD OpenFile::flushEntries() const
{
    std::string folder = hostPath_.below;
    do {
        const std::size_t end = folder.rfind('/');
        folder = end == std::string::npos ? "." : folder.substr(0, end);
        const Descriptor open(openBelow(hostPath_.mount->folder(), folder.c_str(), O_RDONLY | O_DIRECTORY));
        if (!open)
            return ioError(open.get());
        if (const int result = flushToDisk(open.get()); result < 0)
            return ioError(result);
    } while (folder != ".");
    return 0;
}

}  // namespace platform::file

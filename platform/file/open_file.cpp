// open_file.cpp - see open_file.h
#include "open_file.h"

#include "attributes.h"
#include "file_stamp.h"
#include "host/error.h"
#include "kernel/troubles.h"

#include <fcntl.h>

#include <limits>
#include <utility>

namespace platform::file {

using host::ioError;

namespace {
constexpr auto MostBytes = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

OpenFile::OpenFile(std::shared_ptr<OpenFiles> table, std::shared_ptr<SharedFile> file, const FileKey& key,
                   const Sharing& sharing, Descriptor descriptor, HostPlace place, bool temporary)
    : table_(std::move(table)), file_(std::move(file)), key_(key), sharing_(sharing),
      descriptor_(std::move(descriptor)), hostPlace_(std::move(place)), temporary_(temporary)
{
}

OpenFile::~OpenFile()
{
    (void)close();  // again, if a call on another thread outlived CloseHandle and gathered more
    if (temporary_)
        table_->keepTemporary(hostPlace_, key_, std::move(descriptor_));
    descriptor_ = Descriptor();  // first: out of the table it would look like another process's
    table_->leave(key_, sharing_);
}

DWORD OpenFile::close()
{
    if (!mayWrite())
        return 0;
    const std::lock_guard lock(file_->mutex());
    const DWORD error = file_->release(descriptor_.get());
    if (error != 0)
        kernel::noteTrouble(kernel::Trouble::Writing, kernel::Troubled::File, path(), error);
    return error;
}

ReadResult OpenFile::read(std::span<std::byte> out)
{
    if (!mayRead())
        return {0, ERROR_ACCESS_DENIED};
    const std::lock_guard lock(file_->mutex());
    if (file_->hasGathered()) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    if (aheadVersion_ != file_->version()) {
        ahead_.forget();
        aheadVersion_ = file_->version();
    }
    const ReadResult result = ahead_.read(descriptor_.get(), place_, out, file_->size(), !othersMayWrite());
    place_ += result.bytes;
    return result;
}

Written OpenFile::write(std::span<const std::byte> bytes)
{
    if (!mayWrite())
        return {0, ERROR_ACCESS_DENIED};
    if (bytes.empty())
        return {};
    std::unique_lock lock(file_->mutex());
    if (bytes.size() > MostBytes - place_)
        return {0, ERROR_DISK_FULL};
    Written written = file_->write(descriptor_.get(), place_, bytes);
    place_ += written.bytes;
    if (written.hostIsFull && SharedFile::anyReserves()) {
        // What other files have reserved and not used is no reason to refuse.
        lock.unlock();
        table_->releaseReserves();
        lock.lock();
        const std::size_t before = written.bytes;
        written = file_->write(descriptor_.get(), place_, bytes.subspan(before));
        place_ += written.bytes;
        written.bytes += before;
    }
    return written;
}

OpenFile::Sought OpenFile::seek(std::int64_t distance, DWORD method)
{
    const std::lock_guard lock(file_->mutex());
    if (method == FILE_CURRENT && distance == 0 && file_->hasGathered())
        return {place_, 0};  // only asked where it stands: what is gathered needn't be written out for that
    std::uint64_t from = 0;
    if (method == FILE_CURRENT) {
        from = place_;
    } else if (method == FILE_END) {
        // A reader that lets nobody write knows the length since it was opened.
        if (mayWrite() || othersMayWrite()) {
            HostStatus status = {};
            if (const DWORD error = refreshSize(status); error != 0)
                return {0, error};
        }
        from = file_->size();
    } else if (method != FILE_BEGIN) {
        return {0, ERROR_INVALID_PARAMETER};
    }
    if (distance < 0 && static_cast<std::uint64_t>(-(distance + 1)) + 1 > from)
        return {0, ERROR_NEGATIVE_SEEK};
    const std::uint64_t place = from + static_cast<std::uint64_t>(distance);
    if (place > MostBytes)
        return {0, ERROR_INVALID_PARAMETER};
    // Bytes that are lost already don't keep a program from going back to where the file is whole, and cutting it
    // there.
    if (file_->hasGathered()) {
        if (const DWORD error = writeOut(); error != 0)
            return {0, error};
    }
    place_ = place;
    return {place, 0};
}

DWORD OpenFile::endHere()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    const std::lock_guard lock(file_->mutex());
    return file_->endAt(descriptor_.get(), place_);
}

DWORD OpenFile::flush()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    const std::lock_guard lock(file_->mutex());
    if (const DWORD error = file_->writeOut(); error != 0)
        return error;
    if (const int result = flushToDisk(descriptor_.get()); result < 0)
        return ioError(result);
    // Nothing here renames or deletes an open file, so its entry needs that once.
    if (!entriesFlushed_) {
        if (const DWORD error = flushEntries(); error != 0)
            return error;
        entriesFlushed_ = true;
    }
    return 0;
}

DWORD OpenFile::handOver()
{
    if (!mayWrite())
        return ERROR_ACCESS_DENIED;
    const std::lock_guard lock(file_->mutex());
    return file_->writeOut();
}

DWORD OpenFile::stamp(FileStamp& stamp)
{
    const std::lock_guard lock(file_->mutex());
    if (const DWORD error = writeOut(); error != 0)
        return error;
    timespec now = {};
    HostStatus status = {};
    if (::clock_gettime(CLOCK_REALTIME, &now) != 0)
        return ERROR_GEN_FAILURE;
    if (const int result = readStatus(descriptor_.get(), "", status); result < 0)
        return ioError(result);
    stamp = stampOf(status, now);
    return 0;
}

DWORD OpenFile::tell(BY_HANDLE_FILE_INFORMATION& information)
{
    HostStatus status = {};
    {
        const std::lock_guard lock(file_->mutex());
        if (const DWORD error = refreshSize(status); error != 0)
            return error;
    }
    const bool leadingPoint = *hostPlace_.name() == '.';
    const StoredAttributes stored = storedAttributes(descriptor_.get(), "", status);
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

// Before a call that isn't a writing one itself, and whose failure would be told as one of reading.
DWORD OpenFile::writeOut()
{
    const DWORD error = file_->writeOut();
    if (error != 0)
        kernel::noteTrouble(kernel::Trouble::Writing, kernel::Troubled::File, path(), error);
    return error;
}

// Writes out what is gathered, then asks the host, which may know of another process's writes.
DWORD OpenFile::refreshSize(HostStatus& status)
{
    if (const DWORD error = writeOut(); error != 0)
        return error;
    if (const int result = readStatus(descriptor_.get(), "", status); result < 0)
        return ioError(result);
    file_->setSize(status.stx_size);
    return 0;
}

// The entry in its folder, that folder's in its own, and so on: a folder that was made a moment ago may be
// on no disk yet either.
DWORD OpenFile::flushEntries() const
{
    std::string folder = hostPlace_.path;
    do {
        const std::size_t end = folder.rfind('/');
        folder = end == std::string::npos ? "." : folder.substr(0, end);
        const Descriptor open(openBelow(hostPlace_.mount->folder(), folder.c_str(), O_RDONLY | O_DIRECTORY));
        if (!open)
            return ioError(open.get());
        if (const int result = flushToDisk(open.get()); result < 0)
            return ioError(result);
    } while (folder != ".");
    return 0;
}

}  // namespace platform::file

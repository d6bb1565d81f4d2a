#include "entries.h"

#include "attributes.h"
#include "file_stamp.h"
#include "host/error.h"
#include "open_files.h"
#include "parent_folder.h"
#include "stored_attributes.h"

#include "ce/error.h"
#include "ce/file.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

namespace platform::file {

using host::ioError;
using host::platformError;

namespace {

Deleted deleteFound(const HostPath& path, int folder, const HostStatus& status, const OpenFiles& table)
    REQUIRES(table.openings()) EXCLUDES(table.mutex())
{
    if (const DWORD error = deletionError(path, folder, status, table))
        return {error, error == ERROR_SHARING_VIOLATION};
    path.mount->expectChange(deviceOf(status), path.folder());
    if (const int result = removeFile(folder, path.name()); result < 0)
        return {platformError(result)};
    path.mount->noteChange(deviceOf(status));
    if (status.stx_nlink == 1)
        path.mount->giveBackRoom(status.stx_size);
    return {};
}

Deleted deleteTemporary(const HostPath& path, const SharedFile& file, OpenFiles& table) REQUIRES(table.mutex())
{
    if (table.isOpen(file.key()))
        return {ERROR_SHARING_VIOLATION, true};
    {
        const kernel::MutexLock lock(file.mutex());
        path.mount->giveBackRoom(file.size());
    }
    table.temporaries().noteDeleted(path);
    return {};
}

// Gives each unnamed temporary file (temporary_files.h) its name on the host if the file's path is `path` or a parent
// path of `path`. Call this function before any system call with `path`. Returns 0 or the error.
DWORD nameTemporaries(const HostPath& path)
{
    OpenFiles& table = OpenFiles::instance();
    const kernel::MutexLock lock(table.mutex());
    return table.nameOnTheWayTo(path);
}

}  // namespace

DWORD deletionError(const HostPath& path, int folder, const HostStatus& status, const OpenFiles& table)
{
    constexpr DWORD KeepsOut =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_ROMMODULE;
    bool wasMadeHere = false;
    bool isOpen = false;
    {
        const kernel::MutexLock lock(table.mutex());
        wasMadeHere = table.wasMadeHere(status);
        isOpen = table.isOpen(keyOf(status));
    }
    const StoredAttributes stored = wasMadeHere ? StoredAttributes{} : storedAttributes(folder, path.name(), status);
    if (stored.error != 0)
        return ioError(stored.error);
    if ((attributesOf(status, stored.bits, false) & KeepsOut) != 0)
        return ERROR_ACCESS_DENIED;
    return isOpen ? ERROR_SHARING_VIOLATION : 0;
}

Attributes attributesAt(const HostPath& path)
{
    if (path.error != 0)
        return {path.error, 0};
    if (const DWORD error = nameTemporaries(path); error != 0)
        return {error, 0};
    // The host doesn't read extended attributes through a descriptor that was opened with O_PATH. So the entry is
    // looked up by its name in its folder.
    const ParentFolder parent(path);
    HostStatus status = {};
    if (const int result = statusAt(parent, path, status); result < 0)
        return {errorAt(path, parent, result), 0};
    if (path.endsInBackslash && !isFolder(status))
        return {ERROR_PATH_NOT_FOUND, 0};
    const bool isRoot = path.isMount() && path.mount->name().empty();
    // A mounted folder can have any name on the host. Its name on the device decides whether it is hidden.
    const bool leadingPoint = path.isMount() ? path.mount->name().starts_with(u'.') : *path.name() == '.';
    const StoredAttributes stored = storedAttributes(parent.get(), path.name(), status);
    if (stored.error != 0)
        return {ioError(stored.error), 0};
    DWORD bits = attributesOf(status, stored.bits, leadingPoint);
    if (path.isMount() && !isRoot && path.mount->isCard())
        bits |= FILE_ATTRIBUTE_TEMPORARY;
    return {0, bits};
}

bool isNothingAt(const HostPath& path)
{
    if (path.error != 0 || path.isMount() || nameTemporaries(path) != 0)
        return false;
    const Descriptor entry(openBelow(path.mount->folder(), path.below.c_str(), O_PATH));
    return entry.get() == -ENOENT || entry.get() == -ENOTDIR;
}

DWORD removeFolderAt(const HostPath& path)
{
    if (path.error != 0)
        return path.error;
    if (path.isMount())
        return ERROR_ACCESS_DENIED;
    if (const DWORD error = nameTemporaries(path); error != 0)
        return error;
    const ParentFolder parent(path);
    HostStatus status = {};
    if (const int result = statusAt(parent, path, status); result < 0)
        return errorAt(path, parent, result);
    if (!isFolder(status))
        return ERROR_PATH_NOT_FOUND;
    path.mount->expectChange(deviceOf(status), path.folder());
    const int result = removeEmptyFolder(parent.get(), path.name());
    path.mount->noteChange(deviceOf(status));
    return result == -ENOTEMPTY || result == -EEXIST ? ERROR_DIR_NOT_EMPTY : platformError(result);
}

// readStatus follows links in the folder part of the path. That does no harm, because isUnchanged compares the device
// and inode numbers: if a link leads to another file, the result is false. The status doesn't include bytes of the file
// that this process still buffers. If there may be such bytes, the result is false, too.
bool isUnchangedAt(const HostPath& path, const FileStamp& stamp)
{
    HostStatus status = {};
    return stamp.provesWrites && stamp.wasAlone && path.error == 0 && !path.isMount() &&
           readStatus(path.mount->folder(), path.below.c_str(), status, Status::Fresh) == 0 &&
           isUnchanged(stamp, status) && !OpenFiles::instance().sizeOfWritten(keyOf(status));
}

DWORD makeFolderAt(const HostPath& path)
{
    if (path.error != 0)
        return path.error;
    if (path.isMount())
        return ERROR_ALREADY_EXISTS;
    if (path.endsInBackslash)
        return ERROR_INVALID_NAME;
    if (const DWORD error = nameTemporaries(path); error != 0)
        return error;
    const ParentFolder parent(path);
    if (parent.get() < 0)
        return errorAt(path, parent, parent.get());
    HostStatus status = {};
    if (const int result = readStatus(parent.get(), "", status); result < 0)
        return platformError(result);
    path.mount->expectChange(deviceOf(status), path.folder());
    const int result = makeFolder(parent.get(), path.name());
    if (result == 0)
        path.mount->noteChange(deviceOf(status));
    if (result == -EEXIST) {
        const int found = statusAt(parent, path, status);
        return found == 0 ? ERROR_ALREADY_EXISTS : found == -ELOOP ? ERROR_ACCESS_DENIED : platformError(found);
    }
    return result == -ENOENT ? ERROR_PATH_NOT_FOUND : platformError(result);
}

Deleted deleteFileAt(const HostPath& path)
{
    if (const DWORD error = cannotBeAFile(path))
        return {error};
    OpenFiles& table = OpenFiles::instance();
    {
        const kernel::MutexLock lock(table.mutex());
        if (const auto temporary = table.temporaries().find(path))
            return deleteTemporary(path, *temporary, table);
        if (const DWORD error = table.nameOnTheWayTo(path); error != 0)
            return {error};
    }
    const kernel::ExclusiveLock alone(table.openings());
    const ParentFolder parent(path);
    HostStatus status = {};
    if (const int result = statusAt(parent, path, status); result < 0)
        return {errorAt(path, parent, result)};
    const Deleted deleted = deleteFound(path, parent.get(), status, table);
    if (deleted.error == 0) {
        const kernel::MutexLock lock(table.mutex());
        table.temporaries().noteDeleted(path);
    }
    return deleted;
}

}  // namespace platform::file

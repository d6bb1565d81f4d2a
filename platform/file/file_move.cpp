#include "file/file_move.h"

#include "attributes.h"
#include "device_path.h"
#include "entries.h"
#include "host/error.h"
#include "open_files.h"
#include "parent_folder.h"

#include "ce/error.h"
#include "ce/file.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>

namespace platform::file {

using host::platformError;

namespace {

// An entry that moveFile looked up. `result` is what statusAt returned.
struct Entry {
    explicit Entry(const HostPath& path) : folder(path), result(statusAt(folder, path, status)) {}

    ParentFolder folder;
    HostStatus status = {};
    int result;
};

// Before a move that replaces a file, gives the moved file the owner, group and mode of the replaced file. If this
// happened after the move, a user without permission for the replaced file could open the new file before its rights
// are set.
DWORD takeRightsOf(const HostStatus& replaced, int folder, const char* name)
{
    const Descriptor moved(openBelow(folder, name, O_RDONLY));
    return platformError(moved ? takeRights(moved.get(), replaced) : -EACCES);
}

DWORD errorOfMove(int result)
{
    return result == -EXDEV ? DWORD{ERROR_NOT_SAME_DEVICE} : platformError(result);
}

// Moves the entry to `to`, and fails if something exists there. The file system checks this during the move. If it
// doesn't support a move with that check, this function checks that nothing exists at `to` before it moves the entry.
DWORD moveToFree(const HostPath& from, const Entry& moved, const HostPath& to)
{
    std::optional<ParentFolder> other;
    if (from.folder() != to.folder())
        other.emplace(to);
    const int folder = other ? other->get() : moved.folder.get();
    if (folder < 0)
        return errorAt(to, *other, folder);
    int result = moveFile(moved.folder.get(), from.name(), folder, to.name(), false);
    if (result == -EINVAL) {  // the file system doesn't support a move with the check
        HostStatus status = {};
        const int found = readStatus(folder, to.name(), status);
        result = found == 0 ? -EEXIST : found;
        if (found == -ENOENT)
            result = moveFile(moved.folder.get(), from.name(), folder, to.name(), true);
    }
    return result == -EEXIST ? DWORD{ERROR_ALREADY_EXISTS} : errorOfMove(result);
}

// Moves the entry to `to`. If a file exists there, the move replaces it.
DWORD moveOver(const HostPath& from, const Entry& moved, const HostPath& to, const OpenFiles& table)
    REQUIRES(table.openings()) EXCLUDES(table.mutex())
{
    const Entry replaced(to);
    if (replaced.folder.get() < 0 || (replaced.result < 0 && replaced.result != -ENOENT))
        return errorAt(to, replaced.folder, replaced.result);
    const bool exists = replaced.result == 0;
    if (exists) {
        if (const DWORD error = deletionError(to, replaced.folder.get(), replaced.status, table))
            return error;
        if (const DWORD error = takeRightsOf(replaced.status, moved.folder.get(), from.name()))
            return error;
    }
    if (const int result = moveFile(moved.folder.get(), from.name(), replaced.folder.get(), to.name(), true);
        result < 0)
        return errorOfMove(result);
    if (exists && replaced.status.stx_nlink == 1)
        to.mount->giveBackRoom(replaced.status.stx_size);
    return 0;
}

DWORD moveFileAt(const HostPath& from, const HostPath& to, bool replace)
{
    for (const HostPath* path : {&from, &to}) {
        if (const DWORD error = cannotBeAFile(*path))
            return error;
    }
    if (from.mount != to.mount)
        return ERROR_NOT_SAME_DEVICE;
    OpenFiles& table = OpenFiles::instance();
    const kernel::ExclusiveLock alone(table.openings());
    for (const HostPath* path : {&from, &to}) {
        const kernel::MutexLock lock(table.mutex());
        if (const DWORD error = table.nameOnTheWayTo(*path))
            return error;
    }
    const Entry moved(from);
    if (moved.result < 0)
        return errorAt(from, moved.folder, moved.result);
    if (const DWORD error = deletionError(from, moved.folder.get(), moved.status, table))
        return error;
    to.mount->expectChange(deviceOf(moved.status), to.folder());
    if (const DWORD error = replace ? moveOver(from, moved, to, table) : moveToFree(from, moved, to))
        return error;
    to.mount->noteChange(deviceOf(moved.status));
    {
        const kernel::MutexLock lock(table.mutex());
        table.temporaries().noteDeleted(from);
    }
    return 0;
}

}  // namespace

DWORD moveFile(std::u16string_view from, std::u16string_view to, bool replace)
{
    return moveFileAt(resolvePath(from), resolvePath(to), replace);
}

}  // namespace platform::file

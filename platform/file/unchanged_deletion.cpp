#include "unchanged_deletion.h"

#include "attributes.h"
#include "entries.h"
#include "file_stamp.h"
#include "host/error.h"
#include "host/files.h"
#include "kernel/troubles.h"
#include "open_files.h"
#include "parent_folder.h"
#include "use_elsewhere.h"

#include "ce/error.h"

#include <fcntl.h>

#include <cerrno>
#include <string>

namespace platform::file {

using host::ioError;
using host::platformError;

namespace {

// The file to delete. It is open, and this process has a lease on it if the host grants one.
struct Held {
    Descriptor file;
    HostStatus status = {};
    Lease lease = Lease::NotGiven;
};

// The name that the file gets before it is deleted. Nobody can predict it, so no other file has it.
std::string asideNameOf(std::string name)
{
    constexpr std::size_t MostBytes = 255;
    const std::string end = " (being deleted by Quillbox " + host::unguessableName() + ")";
    const std::size_t room = MostBytes - end.size();
    if (name.size() > room) {
        std::size_t cut = room;
        while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80)  // not inside a character of UTF-8
            --cut;
        name.resize(cut);
    }
    return name + end;
}

DWORD hold(const HostPath& path, const ParentFolder& parent, const FileStamp& stamp, Held& held)
{
    held.file = Descriptor(openBelow(parent.get(), path.name(), O_RDONLY));
    if (!held.file)
        return errorAt(path, parent, held.file.get());
    const LeaseTaken taken = takeLease(held.file.get(), stamp.device);
    if (taken.error != 0 || taken.lease == Lease::InUse)
        return taken.error != 0 ? taken.error : ERROR_SHARING_VIOLATION;
    held.lease = taken.lease;
    if (const int result = readStatus(held.file.get(), "", held.status); result < 0)
        return platformError(result);
    if (!isUnchanged(stamp, held.status))
        return ERROR_FILE_INVALID;
    return stamp.provesWrites ? 0 : ERROR_RETRY;
}

// Moves the file aside on a file system whose renaming always replaces an existing entry. On such a file system
// moveBack makes a hard link, because that never replaces an entry. So this function first checks that the file system
// can make hard links. If it can't, there is no safe way to delete the file.
int moveAsideByLinks(int folder, const char* name, const char* aside)
{
    if (const int result = linkFile(folder, name, aside); result < 0)
        return result == -EPERM || result == -EINVAL ? -EOPNOTSUPP : result;
    if (const int result = removeFile(folder, aside); result < 0)
        return result;
    return moveFile(folder, name, folder, aside, true);
}

int moveAside(int folder, const char* name, const char* aside)
{
    const int result = moveFile(folder, name, folder, aside, false);
    return result == -EINVAL ? moveAsideByLinks(folder, name, aside) : result;
}

int moveBackOnce(int folder, const char* aside, const char* name)
{
    const int result = moveFile(folder, aside, folder, name, false);
    if (result != -EINVAL)
        return result;
    const int linked = linkFile(folder, aside, name);
    return linked == 0 ? removeFile(folder, aside) : linked;
}

// Gives the file its old name back, because nobody would look for the file under the name that it got for the deletion.
// Tries several times, because a failure can be temporary.
int moveBack(int folder, const char* aside, const char* name)
{
    int result = -EIO;
    for (int attempt = 0; attempt < 3 && result < 0 && result != -EEXIST && result != -ENOENT; ++attempt)
        result = moveBackOnce(folder, aside, name);
    return result;
}

// Returns the reason why the file that was moved aside must not be deleted, as an error; 0 if it may be deleted. The
// lease is checked last. It shows whether another process has found the file by its old name and waits in its open call
// for the end of the lease. In this case the file stays. Otherwise that process would write to a deleted file.
DWORD reasonToStay(int folder, const char* aside, const Held& held, const FileStamp& stamp)
{
    HostStatus status = {};
    if (const int result = readStatus(folder, aside, status); result < 0)
        return ioError(result);
    if (!hasSameContent(stamp, status))  // not isUnchanged: the renaming set the time of change
        return ERROR_FILE_INVALID;
    if (held.lease != Lease::Held)
        return 0;
    const int lease = leaseOf(held.file.get());
    return lease < 0 ? ioError(lease) : lease == F_WRLCK ? 0 : ERROR_SHARING_VIOLATION;
}

void noteLeftAside(HostPath path, const std::string& aside, int error)
{
    path.below = path.below.substr(0, path.nameStart) + aside;
    kernel::noteTrouble(kernel::Trouble::Writing, kernel::Troubled::File, devicePathOf(path), platformError(error));
}

DWORD deleteHeld(const HostPath& path, int folder, const Held& held, const FileStamp& stamp)
{
    const std::string aside = asideNameOf(path.name());
    if (const int result = moveAside(folder, path.name(), aside.c_str()); result < 0)
        return result == -ENOENT ? DWORD{ERROR_FILE_NOT_FOUND} : ioError(result);
    DWORD error = reasonToStay(folder, aside.c_str(), held, stamp);
    if (error == 0)
        error = ioError(removeFile(folder, aside.c_str()));
    if (error == 0)
        return 0;
    // -EEXIST: another process made a new file at the path. Both files stay, because only the user knows which one is
    // wanted.
    const int result = moveBack(folder, aside.c_str(), path.name());
    if (result < 0 && result != -ENOENT)
        noteLeftAside(path, aside, result);
    return error;
}

}  // namespace

DWORD deleteUnchangedAt(const HostPath& path, const FileStamp& stamp)
{
    if (const DWORD error = cannotBeAFile(path))
        return error;
    // While this lock is held, no other thread of this process opens the file. Such an opening would break the lease.
    OpenFiles& table = OpenFiles::instance();
    const kernel::ExclusiveLock alone(table.openings());
    {
        const kernel::MutexLock lock(table.mutex());
        if (const DWORD error = table.nameOnTheWayTo(path))
            return error;
    }
    const ParentFolder parent(path);
    HostStatus status = {};
    if (const int result = statusAt(parent, path, status); result < 0)
        return errorAt(path, parent, result);
    if (const DWORD error = deletionError(path, parent.get(), status, table))
        return error;
    Held held;
    if (const DWORD error = hold(path, parent, stamp, held))
        return error;
    path.mount->expectChange(stamp.device, path.folder());
    const DWORD error = deleteHeld(path, parent.get(), held, stamp);
    path.mount->noteChange(stamp.device);
    if (error == 0 && held.status.stx_nlink == 1)
        path.mount->giveBackRoom(held.status.stx_size);
    return error;
}

}  // namespace platform::file

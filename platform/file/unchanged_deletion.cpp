// unchanged_deletion.cpp - see unchanged_deletion.h
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

// The file that is to go, held open and as a rule by a lease.
struct Held {
    Descriptor file;
    HostStatus status = {};
    Lease lease = Lease::NotGiven;
};

// Nobody guesses it, so nobody makes such a file by chance or in bad faith.
std::string asideNameOf(std::string name)
{
    constexpr std::size_t MostBytes = 255;
    const std::string end = " (being deleted by Quillbox " + host::unguessableName() + ")";
    const std::size_t room = MostBytes - end.size();
    if (name.size() > room) {
        std::size_t cut = room;
        while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80)  // not inside a character
            --cut;
        name.resize(cut);
    }
    return name + end;
}

DWORD hold(const HostPlace& place, const ParentFolder& parent, const FileStamp& stamp, Held& held)
{
    held.file = Descriptor(openBelow(parent.get(), place.name(), O_RDONLY));
    if (!held.file)
        return errorAt(place, parent, held.file.get());
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

// On file systems that can't refuse to replace, a file goes back by a link, which never replaces. One that can't link
// either has no safe way.
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

// A host that fails for a moment must not leave a file under a name that nobody looks for.
int moveBack(int folder, const char* aside, const char* name)
{
    int result = -EIO;
    for (int attempt = 0; attempt < 3 && result < 0 && result != -EEXIST && result != -ENOENT; ++attempt)
        result = moveBackOnce(folder, aside, name);
    return result;
}

// Why what was moved aside must not go; 0 if it may. The lease is asked for last: who opened the file by its old name
// waits for the lease, and would write to a file that is gone.
DWORD reasonToStay(int folder, const char* aside, const Held& held, const FileStamp& stamp)
{
    HostStatus status = {};
    if (const int result = readStatus(folder, aside, status); result < 0)
        return ioError(result);
    if (!hasSameContent(stamp, status))  // the moving itself changed the time of change
        return ERROR_FILE_INVALID;
    if (held.lease != Lease::Held)
        return 0;
    const int lease = leaseOf(held.file.get());
    return lease < 0 ? ioError(lease) : lease == F_WRLCK ? 0 : ERROR_SHARING_VIOLATION;
}

void tellOfAside(HostPlace place, const std::string& aside, int error)
{
    place.path = place.path.substr(0, place.nameStart) + aside;
    kernel::noteTrouble(kernel::Trouble::Writing, kernel::Troubled::File, devicePathOf(place), platformError(error));
}

DWORD deleteHeld(const HostPlace& place, int folder, const Held& held, const FileStamp& stamp)
{
    const std::string aside = asideNameOf(place.name());
    if (const int result = moveAside(folder, place.name(), aside.c_str()); result < 0)
        return result == -ENOENT ? DWORD{ERROR_FILE_NOT_FOUND} : ioError(result);
    DWORD error = reasonToStay(folder, aside.c_str(), held, stamp);
    if (error == 0)
        error = ioError(removeFile(folder, aside.c_str()));
    if (error == 0)
        return 0;
    // -EEXIST: somebody made a new file at the path. Both stay, and which of them is wanted isn't decided here.
    const int result = moveBack(folder, aside.c_str(), place.name());
    if (result < 0 && result != -ENOENT)
        tellOfAside(place, aside, result);
    return error;
}

}  // namespace

DWORD deleteUnchangedAt(const HostPlace& place, const FileStamp& stamp)
{
    if (const DWORD error = cannotBeAFile(place))
        return error;
    // Nobody here opens the file meanwhile: he would wait for the lease.
    const auto table = OpenFiles::instance();
    const auto lock = table->lock();
    table->temporary().letGo();
    const ParentFolder parent(place);
    HostStatus status = {};
    if (const int result = statusAt(parent, place, status); result < 0)
        return errorAt(place, parent, result);
    if (const DWORD error = deletionError(place, parent.get(), status, *table))
        return error;
    Held held;
    if (const DWORD error = hold(place, parent, stamp, held))
        return error;
    place.mount->expectChange(stamp.device, place.parent());
    const DWORD error = deleteHeld(place, parent.get(), held, stamp);
    place.mount->noteChange(stamp.device);
    if (error == 0 && held.status.stx_nlink == 1)
        place.mount->giveBackRoom(held.status.stx_size);
    return error;
}

}  // namespace platform::file

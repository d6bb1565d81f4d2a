#include "opening.h"

#include "attributes.h"
#include "file_stamp.h"
#include "host/error.h"
#include "parent_folder.h"
#include "stored_attributes.h"
#include "use_elsewhere.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>

namespace platform::file {

using host::ioError;
using host::platformError;

namespace {

bool makesFile(DWORD creation)
{
    return creation != OPEN_EXISTING && creation != TRUNCATE_EXISTING;
}

// A call of CreateFileW, and what is known about its file so far.
struct Request {
    const HostPath& path;
    Sharing sharing;
    DWORD creation;
    Descriptor descriptor;
    HostStatus status = {};
    bool existed = false;
    bool isRomModule = false;
    bool isOpenHere = false;
    bool isUnsure = false;
    bool isAlone = false;  // no other process has the file open
    bool wasMadeHere = false;

    bool truncates() const { return creation == CREATE_ALWAYS || creation == TRUNCATE_EXISTING; }
    bool writes() const { return truncates() || (sharing.access & GENERIC_WRITE) != 0; }
    bool makes() const { return makesFile(creation); }

    // The access and sharing that are compared with those of other handles. A truncation is regarded as a write.
    Sharing effectiveSharing() const { return {sharing.access | (truncates() ? GENERIC_WRITE : 0), sharing.share}; }
};

int openFlags(const Request& request, bool isNew)
{
    const bool reads = (request.sharing.access & GENERIC_READ) != 0;
    if (isNew ? (request.sharing.access & GENERIC_WRITE) != 0 : request.writes())
        return reads ? O_RDWR : O_WRONLY;
    // A handle with access 0 needs only the directory entry. The host doesn't regard a descriptor with O_PATH as a use
    // of the file.
    return reads || isNew ? O_RDONLY : O_PATH;
}

int openNew(Request& request, OpenFiles& table) EXCLUDES(table.mutex())
{
    const int result = makeEntry(request.path, openFlags(request, true) | O_CREAT | O_EXCL, NewFileMode);
    if (result >= 0) {
        request.descriptor = Descriptor(result);
        const kernel::MutexLock lock(table.mutex());
        table.temporaries().noteMade(request.path, result);
    }
    return result;
}

// Returns false if the entry is a link, a fifo, a socket or a device node. Call this function before the entry is
// opened for writing, because the reader of a fifo notices such an opening.
bool isFileForWriting(const HostPath& path)
{
    const Descriptor entry(openBelow(path.mount->folder(), path.below.c_str(), O_PATH));
    HostStatus status = {};
    return !entry || readStatus(entry.get(), "", status) != 0 || isFile(status) || isFolder(status);
}

int openOld(Request& request)
{
    if (request.writes() && !isFileForWriting(request.path))
        return -ELOOP;
    const int result = openBelow(request.path.mount->folder(), request.path.below.c_str(), openFlags(request, false));
    if (result >= 0)
        request.descriptor = Descriptor(result);
    request.existed = result >= 0;
    return result;
}

// Opens an existing file or makes a new one, and tries the likelier case first. With CREATE_ALWAYS, the file mostly
// doesn't exist yet.
int openEither(Request& request, OpenFiles& table) EXCLUDES(table.mutex())
{
    if (!request.makes())
        return openOld(request);
    if (request.creation == OPEN_ALWAYS) {
        const int result = openOld(request);
        if (result != -ENOENT)
            return result;
    }
    const int result = openNew(request, table);
    if (request.creation == CREATE_NEW || (result != -EEXIST && result != -ELOOP && result != -EISDIR))
        return result;
    return openOld(request);
}

DWORD openError(const Request& request, int result)
{
    DWORD error = platformError(result);
    // ENXIO and ENODEV can mean that the entry is a device node or a socket, but also that the disk is failing. So the
    // type of the entry decides.
    if ((result == -ENXIO || result == -ENODEV) && isOutsideNameSpace(request.path))
        error = ERROR_FILE_NOT_FOUND;
    if (error == ERROR_FILE_EXISTS && isOutsideNameSpace(request.path))
        return ERROR_ACCESS_DENIED;
    if (error != ERROR_FILE_NOT_FOUND)
        return error;
    const DWORD missing = missingError(request.path);
    // If `missing` is ERROR_FILE_NOT_FOUND, all folders of the path exist. Then a call that may make a new file can't
    // fail with this error if the path is free. So a link, fifo, socket or device node is at the path, and the call
    // fails with ERROR_ACCESS_DENIED.
    return missing == ERROR_FILE_NOT_FOUND && request.makes() ? ERROR_ACCESS_DENIED : missing;
}

// Returns the error if a rule of the device forbids the opening. The host doesn't have these rules, or doesn't apply
// them to the administrator. Returns an I/O error if the stored attributes can't be read. Otherwise returns 0. Sets
// request.isRomModule if the file is a ROM module.
DWORD kindError(Request& request)
{
    if (isFolder(request.status))
        return ERROR_ACCESS_DENIED;
    if (!isFile(request.status))
        return request.makes() ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
    // A file that this process has just made has no stored attributes yet.
    const StoredAttributes stored =
        request.wasMadeHere ? StoredAttributes{} : storedAttributes(request.descriptor.get(), "", request.status);
    if (stored.error != 0)
        return ioError(stored.error);
    const DWORD attributes = attributesOf(request.status, stored.bits, false);
    request.isRomModule = (attributes & FILE_ATTRIBUTE_ROMMODULE) != 0;
    if (request.isRomModule)
        return ERROR_ACCESS_DENIED;
    const bool keepsOut = (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_INROM)) != 0;
    return keepsOut && request.writes() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

DWORD checkExisting(Request& request, const OpenFiles& table) EXCLUDES(table.mutex())
{
    const FileKey key = keyOf(request.status);
    const Sharing sharing = request.effectiveSharing();
    bool conflicts = false;
    bool isOpen = false;
    {
        const kernel::MutexLock lock(table.mutex());
        request.wasMadeHere = table.wasMadeHere(request.status);
        isOpen = table.isOpen(key);
        conflicts = table.conflicts(key, sharing);
    }
    if (const DWORD error = kindError(request); error != 0)
        return error;
    request.isOpenHere = conflicts;
    // probeLease asks the host whether another process uses the file. It is called only if this process has no other
    // handle of the file, because the host would report the descriptor of that handle as a use by another process.
    const bool asks = !conflicts && sharing.access != 0 && !isOpen && !request.wasMadeHere;
    const Lease lease = asks ? probeLease(request.descriptor.get(), sharing, key.device) : Lease::NotGiven;
    request.isUnsure = lease == Lease::InUse;
    request.isAlone = lease == Lease::Held && sharing.share == 0;
    return request.isOpenHere || request.isUnsure ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
}

// Adds the handle to the table. Null if another thread has opened the file since checkExisting, with a handle that
// conflicts with this one.
std::shared_ptr<SharedFile> enter(const Request& request, OpenFiles& table) EXCLUDES(table.mutex())
{
    const FileKey key = keyOf(request.status);
    const kernel::MutexLock lock(table.mutex());
    if (!request.existed)
        table.noteMade(request.status);
    else if (table.conflicts(key, request.effectiveSharing()))
        return nullptr;
    return table.enter(key, request.sharing, *request.path.mount, request.status.stx_size);
}

Opened failed(const Request& request, DWORD error)
{
    return {.error = error,
            .existed = request.existed,
            .file = nullptr,
            .isRomModule = request.isRomModule,
            .isOpenHere = request.isOpenHere,
            .isUnsure = request.isUnsure};
}

// Opens a file of the host.
Opened openOnHost(const HostPath& path, const Sharing& sharing, DWORD creation, OpenFiles& table)
    REQUIRES_SHARED(table.openings()) EXCLUDES(table.mutex())
{
    Request request{.path = path, .sharing = sharing, .creation = creation, .descriptor = {}};
    timespec asked = {};  // if this is a clock tick too early, provesWrites may be FALSE, which is safe
    (void)::clock_gettime(CLOCK_REALTIME_COARSE, &asked);
    if (const int result = openEither(request, table); result < 0) {
        request.isUnsure = result == -EAGAIN;  // there is a lease on the file
        return failed(request, openError(request, result));
    }
    if (const int result = readStatus(request.descriptor.get(), "", request.status); result < 0) {
        if (!request.existed)
            (void)removeFile(ParentFolder(path).get(), path.name());
        return {ioError(result), false, nullptr};
    }
    if (request.existed) {
        if (const DWORD error = checkExisting(request, table); error != 0)
            return failed(request, error);
    }
    const std::uint64_t device = deviceOf(request.status);
    if (request.writes() || !request.existed)
        path.mount->expectChange(device, path.folder());
    if (!request.existed)
        path.mount->noteChange(device);
    const auto shared = enter(request, table);
    request.isOpenHere = shared == nullptr;
    if (!shared)
        return failed(request, ERROR_SHARING_VIOLATION);
    const int descriptor = request.descriptor.get();
    FileStamp stamp = stampOf(request.status, asked);
    stamp.wasAlone = request.isAlone ? TRUE : FALSE;
    auto file = std::make_shared<OpenFile>(table, shared, sharing, std::move(request.descriptor), path, stamp);
    if (request.existed && request.truncates()) {
        const kernel::MutexLock lock(shared->mutex());
        if (const DWORD error = shared->endAt(descriptor, 0); error != 0)
            return failed(request, error);
    }
    return {0, request.existed, std::move(file)};
}

std::optional<DWORD> badRequest(const HostPath& path, DWORD creation)
{
    if (path.error != 0)
        return path.error;
    if (creation < CREATE_NEW || creation > TRUNCATE_EXISTING)
        return ERROR_INVALID_PARAMETER;
    if (path.isMount())
        return creation == CREATE_NEW ? ERROR_FILE_EXISTS : ERROR_ACCESS_DENIED;
    if (path.endsInBackslash)
        return ERROR_INVALID_NAME;
    return std::nullopt;
}

// Opens or makes an unnamed temporary file (temporary_files.h). Empty if the request needs a file on the host. The
// caller then opens or makes the file there.
std::optional<Opened> openTemporary(const HostPath& path, const Sharing& sharing, DWORD creation, OpenFiles& table)
    REQUIRES(table.mutex())
{
    std::shared_ptr<SharedFile> file = table.temporaries().find(path);
    const bool existed = file != nullptr;
    if (existed) {
        if (creation != OPEN_EXISTING || sharing.access != GENERIC_READ)
            return std::nullopt;
        if (table.conflicts(file->key(), sharing))
            return Opened{.error = ERROR_SHARING_VIOLATION, .existed = true, .file = nullptr, .isOpenHere = true};
    } else {
        if (!makesFile(creation) || (sharing.access & GENERIC_WRITE) == 0)
            return std::nullopt;
        file = table.temporaries().make(path);
        if (!file)
            return std::nullopt;
    }
    table.enter(file, sharing);
    return Opened{.existed = existed,
                  .file = std::make_shared<OpenFile>(table, std::move(file), sharing, Descriptor(), path)};
}

}  // namespace

Opened openFile(const HostPath& path, const Sharing& sharing, DWORD creation)
{
    if (const auto error = badRequest(path, creation))
        return {*error, false, nullptr};
    OpenFiles& table = OpenFiles::instance();
    {
        const kernel::MutexLock lock(table.mutex());
        if (auto opened = openTemporary(path, sharing, creation, table))
            return std::move(*opened);
        if (const DWORD error = table.nameOnTheWayTo(path); error != 0)
            return {error, false, nullptr};
        if (makesFile(creation))
            table.temporaries().expectMade(path);
    }
    {
        const kernel::SharedLock opening(table.openings());
        Opened opened = openOnHost(path, sharing, creation, table);
        if (!opened.isUnsure)
            return opened;
    }
    const kernel::ExclusiveLock alone(table.openings());
    return openOnHost(path, sharing, creation, table);
}

}  // namespace platform::file

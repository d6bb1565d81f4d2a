#include "opening.h"

#include "attributes.h"
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

constexpr unsigned NewFileMode = 0666;  // the host takes the bits of the user's mask off

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

    bool truncates() const { return creation == CREATE_ALWAYS || creation == TRUNCATE_EXISTING; }
    bool writes() const { return truncates() || (sharing.access & GENERIC_WRITE) != 0; }
    bool makes() const { return creation != OPEN_EXISTING && creation != TRUNCATE_EXISTING; }
};

int openFlags(const Request& request, bool isNew)
{
    const bool reads = (request.sharing.access & GENERIC_READ) != 0;
    if (isNew ? (request.sharing.access & GENERIC_WRITE) != 0 : request.writes())
        return reads ? O_RDWR : O_WRONLY;
    // A query needs only the entry. A descriptor with O_PATH doesn't count as a use of the file.
    return reads || isNew ? O_RDONLY : O_PATH;
}

int openNew(Request& request, OpenFiles& table) REQUIRES(table.mutex())
{
    const int result = openBelow(request.path.mount->folder(), request.path.below.c_str(),
                                 openFlags(request, true) | O_CREAT | O_EXCL, NewFileMode);
    if (result >= 0) {
        request.descriptor = Descriptor(result);
        table.temporaries().noteMade(request.path, result);
    }
    return result;
}

// The reader of a fifo would notice its opening for writing, so the kind of an entry is read before it is opened for
// writing.
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

// The likelier case is tried first: a file that may be replaced mostly doesn't exist yet.
int openEither(Request& request, OpenFiles& table) REQUIRES(table.mutex())
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
    // Opening a device or a socket fails with these errors, but so does opening a file on a failing disk.
    if ((result == -ENXIO || result == -ENODEV) && isOutsideNameSpace(request.path))
        error = ERROR_FILE_NOT_FOUND;
    if (error == ERROR_FILE_EXISTS && isOutsideNameSpace(request.path))
        return ERROR_ACCESS_DENIED;
    if (error != ERROR_FILE_NOT_FOUND)
        return error;
    const DWORD missing = missingError(request.path);
    // The path is taken by something that isn't part of the name space.
    return missing == ERROR_FILE_NOT_FOUND && request.makes() ? ERROR_ACCESS_DENIED : missing;
}

// Rules of the name space that the host doesn't have, or doesn't apply for the administrator.
DWORD kindError(Request& request, const OpenFiles& table) REQUIRES(table.mutex())
{
    if (isFolder(request.status))
        return ERROR_ACCESS_DENIED;
    if (!isFile(request.status))
        return request.makes() ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
    // A file that this process made just before has no stored attributes yet.
    const StoredAttributes stored = table.wasMadeHere(request.status)
                                        ? StoredAttributes{}
                                        : storedAttributes(request.descriptor.get(), "", request.status);
    if (stored.error != 0)
        return ioError(stored.error);
    const DWORD attributes = attributesOf(request.status, stored.bits, false);
    request.isRomModule = (attributes & FILE_ATTRIBUTE_ROMMODULE) != 0;
    if (request.isRomModule)
        return ERROR_ACCESS_DENIED;
    const bool keepsOut = (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_INROM)) != 0;
    return keepsOut && request.writes() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

DWORD sharingError(Request& request, const OpenFiles& table, const FileKey& key) REQUIRES(table.mutex())
{
    Sharing effective = request.sharing;
    if (request.truncates())
        effective.access |= GENERIC_WRITE;  // for the other handles, a truncation is a write
    request.isOpenHere = table.conflicts(key, effective);
    if (request.isOpenHere)
        return ERROR_SHARING_VIOLATION;
    // If this process already has a descriptor of the file, the host would report that as a use elsewhere.
    if (effective.access != 0 && !table.isOpen(key) && !table.wasMadeHere(request.status) &&
        isUsedElsewhere(request.descriptor.get(), effective, key.device))
        return ERROR_SHARING_VIOLATION;
    return ERROR_SUCCESS;
}

DWORD checkExisting(Request& request, const OpenFiles& table) REQUIRES(table.mutex())
{
    if (const DWORD error = kindError(request, table); error != 0)
        return error;
    return sharingError(request, table, keyOf(request.status));
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

// Opens or makes a temporary file that has no name on the host. Empty if the host has to be asked.
std::optional<Opened> openTemporary(const HostPath& path, const Sharing& sharing, DWORD creation,
                                    const std::shared_ptr<OpenFiles>& table) REQUIRES(table->mutex())
{
    std::shared_ptr<SharedFile> file = table->temporaries().find(path);
    const bool existed = file != nullptr;
    if (existed) {
        if (creation != OPEN_EXISTING || sharing.access != GENERIC_READ)
            return std::nullopt;
        if (table->conflicts(file->key(), sharing))
            return Opened{.error = ERROR_SHARING_VIOLATION, .existed = true, .file = nullptr, .isOpenHere = true};
    } else {
        if (creation == OPEN_EXISTING || creation == TRUNCATE_EXISTING || (sharing.access & GENERIC_WRITE) == 0)
            return std::nullopt;
        file = table->temporaries().make(path);
        if (!file)
            return std::nullopt;
    }
    table->enter(file, sharing);
    return Opened{.existed = existed,
                  .file = std::make_shared<OpenFile>(table, std::move(file), sharing, Descriptor(), path)};
}

}  // namespace

Opened openFile(const HostPath& path, const Sharing& sharing, DWORD creation)
{
    if (const auto error = badRequest(path, creation))
        return {*error, false, nullptr};
    const std::shared_ptr<OpenFiles> table = OpenFiles::instance();
    kernel::MutexLock lock(table->mutex());
    if (auto opened = openTemporary(path, sharing, creation, table))
        return std::move(*opened);
    if (const DWORD error = table->nameOnTheWayTo(path); error != 0)
        return {error, false, nullptr};
    Request request{.path = path,
                    .sharing = sharing,
                    .creation = creation,
                    .descriptor = {}};  // closed before the table is unlocked

    if (const int result = openEither(request, *table); result < 0)
        return {openError(request, result), false, nullptr};
    if (const int result = readStatus(request.descriptor.get(), "", request.status); result < 0)
        return {ioError(result), false, nullptr};
    if (request.existed) {
        if (const DWORD error = checkExisting(request, *table); error != 0)
            return {error, true, nullptr, request.isRomModule, request.isOpenHere};
    }

    const FileKey key = keyOf(request.status);
    if (request.writes() || !request.existed)
        path.mount->expectChange(key.device, path.parent());
    if (!request.existed) {
        table->noteMade(request.status);
        path.mount->noteChange(key.device);
    }
    const auto shared = table->enter(key, sharing, path.mount, request.status.stx_size);
    const int descriptor = request.descriptor.get();
    auto file = std::make_shared<OpenFile>(table, shared, sharing, std::move(request.descriptor), path);
    if (request.existed && request.truncates()) {
        kernel::MutexLock fileLock(shared->mutex());
        const DWORD error = shared->endAt(descriptor, 0);
        fileLock.unlock();
        lock.unlock();  // on failure the destructor of `file` takes the file out of the table, which locks it
        if (error != 0)
            return {error, true, nullptr};
    }
    return {0, request.existed, std::move(file)};
}

}  // namespace platform::file

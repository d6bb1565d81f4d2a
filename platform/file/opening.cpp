// opening.cpp - see opening.h
#include "opening.h"

#include "attributes.h"
#include "host/error.h"
#include "parent_folder.h"
#include "use_elsewhere.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>

namespace platform::file {

using host::ioError;
using host::platformError;

namespace {

constexpr unsigned NewFileMode = 0666;  // less the user's mask

// One CreateFileW on its way.
struct Request {
    const HostPlace& place;
    Sharing sharing;
    DWORD creation;
    Descriptor descriptor;
    HostStatus status = {};
    bool existed = false;
    bool isRomModule = false;
    bool isOpenHere = false;
    bool temporary = false;  // a new file is opened for reading too, and the descriptor kept when the handle is closed

    [[nodiscard]] bool truncates() const { return creation == CREATE_ALWAYS || creation == TRUNCATE_EXISTING; }
    [[nodiscard]] bool writes() const { return truncates() || (sharing.access & GENERIC_WRITE) != 0; }
    [[nodiscard]] bool makes() const { return creation != OPEN_EXISTING && creation != TRUNCATE_EXISTING; }
};

int openFlags(const Request& request, bool isNew)
{
    const bool reads = (isNew && request.temporary) || (request.sharing.access & GENERIC_READ) != 0;
    if (isNew ? (request.sharing.access & GENERIC_WRITE) != 0 : request.writes())
        return reads ? O_RDWR : O_WRONLY;
    // A query needs no more than the entry, and a descriptor of that kind is no use of the file.
    return reads || isNew ? O_RDONLY : O_PATH;
}

// By the descriptor that was kept of it, if the path still stands for the file.
bool openTemporary(Request& request, TemporaryFile& temporary)
{
    if (request.creation != OPEN_EXISTING || request.sharing.access != GENERIC_READ || !temporary.isAt(request.place))
        return false;
    const auto found = temporary.find();
    if (!found)
        return false;
    request.status = found->status;
    request.descriptor = temporary.take();
    request.existed = request.temporary = true;
    return true;
}

int openNew(Request& request, OpenFiles& table)
{
    const int result = openBelow(request.place.mount->folder(), request.place.path.c_str(),
                                 openFlags(request, true) | O_CREAT | O_EXCL, NewFileMode);
    if (result >= 0) {
        request.descriptor = Descriptor(result);
        if (table.declaredTemporary().take(request.place))
            markTemporary(result);
    }
    return result;
}

// Opening a fifo for writing would be seen by its reader, so what is to be written is looked at first.
bool isFileForWriting(const HostPlace& place)
{
    const Descriptor entry(openBelow(place.mount->folder(), place.path.c_str(), O_PATH));
    HostStatus status = {};
    return !entry || readStatus(entry.get(), "", status) != 0 || isFile(status) || isFolder(status);
}

int openOld(Request& request)
{
    if (request.writes() && !isFileForWriting(request.place))
        return -ELOOP;
    const int result = openBelow(request.place.mount->folder(), request.place.path.c_str(), openFlags(request, false));
    if (result >= 0)
        request.descriptor = Descriptor(result);
    request.existed = result >= 0;
    return result;
}

// The order is that of the likelier case: a file to be replaced is mostly not there yet.
int openEither(Request& request, OpenFiles& table)
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
    // What a device or a socket says when it is opened, and otherwise a disk that fails.
    if ((result == -ENXIO || result == -ENODEV) && somethingInvisibleStands(request.place))
        error = ERROR_FILE_NOT_FOUND;
    if (error == ERROR_FILE_EXISTS && somethingInvisibleStands(request.place))
        return ERROR_ACCESS_DENIED;
    if (error != ERROR_FILE_NOT_FOUND)
        return error;
    const DWORD missing = missingError(request.place);
    // Something that is no part of the name space stands in the way of what is to be made.
    return missing == ERROR_FILE_NOT_FOUND && request.makes() ? ERROR_ACCESS_DENIED : missing;
}

// Rules of the name space that the host doesn't know or, for the administrator, doesn't apply.
DWORD kindError(Request& request, const OpenFiles& table)
{
    if (isFolder(request.status))
        return ERROR_ACCESS_DENIED;
    if (!isFile(request.status))
        return request.makes() ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
    // A file that was made here a moment ago has no attributes of its own yet.
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

DWORD sharingError(Request& request, const OpenFiles& table, const FileKey& key)
{
    Sharing effective = request.sharing;
    if (request.truncates())
        effective.access |= GENERIC_WRITE;  // to those who have it open, that is a write
    request.isOpenHere = table.conflicts(key, effective);
    if (request.isOpenHere)
        return ERROR_SHARING_VIOLATION;
    // Our own further descriptors would look like another process's.
    if (effective.access != 0 && !request.temporary && !table.isOpen(key) && !table.wasMadeHere(request.status) &&
        isUsedElsewhere(request.descriptor.get(), effective, key.device))
        return ERROR_SHARING_VIOLATION;
    return ERROR_SUCCESS;
}

DWORD checkExisting(Request& request, const OpenFiles& table)
{
    if (const DWORD error = kindError(request, table); error != 0)
        return error;
    return sharingError(request, table, keyOf(request.status));
}

std::optional<DWORD> badRequest(const HostPlace& place, DWORD creation)
{
    if (place.error != 0)
        return place.error;
    if (creation < CREATE_NEW || creation > TRUNCATE_EXISTING)
        return ERROR_INVALID_PARAMETER;
    if (place.isMount())
        return creation == CREATE_NEW ? ERROR_FILE_EXISTS : ERROR_ACCESS_DENIED;
    if (place.endsInBackslash)
        return ERROR_INVALID_NAME;
    return std::nullopt;
}

}  // namespace

Opened openFile(const HostPlace& place, const Sharing& sharing, DWORD creation)
{
    if (const auto error = badRequest(place, creation))
        return {*error, false, nullptr};
    const std::shared_ptr<OpenFiles> table = OpenFiles::instance();
    auto lock = table->lock();
    Request request{
        .place = place, .sharing = sharing, .creation = creation, .descriptor = {}};  // closes before the lock goes

    if (!openTemporary(request, table->temporary())) {
        table->temporary().letGo();
        request.temporary = request.makes() && table->temporary().isAt(place);
        if (const int result = openEither(request, *table); result < 0)
            return {openError(request, result), false, nullptr};
        if (const int result = readStatus(request.descriptor.get(), "", request.status); result < 0)
            return {ioError(result), false, nullptr};
        request.temporary = request.temporary && !request.existed;
    }
    if (request.existed) {
        if (const DWORD error = checkExisting(request, *table); error != 0)
            return {error, true, nullptr, request.isRomModule, request.isOpenHere};
    }

    const FileKey key = keyOf(request.status);
    if (request.writes() || !request.existed)
        place.mount->expectChange(key.device, place.parent());
    if (!request.existed) {
        table->noteMade(request.status);
        place.mount->noteChange(key.device);
    }
    const auto shared = table->enter(key, sharing, place.mount, request.status.stx_size);
    const int descriptor = request.descriptor.get();
    auto file = std::make_shared<OpenFile>(table, shared, key, sharing, std::move(request.descriptor), place,
                                           request.temporary);
    if (request.existed && request.truncates()) {
        std::unique_lock fileLock(shared->mutex());
        const DWORD error = shared->endAt(descriptor, 0);
        fileLock.unlock();
        lock.unlock();  // a file that isn't handed out leaves the table as it goes
        if (error != 0)
            return {error, true, nullptr};
    }
    return {0, request.existed, std::move(file)};
}

}  // namespace platform::file

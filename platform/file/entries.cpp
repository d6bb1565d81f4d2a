// entries.cpp - see entries.h
#include "file/entries.h"

#include "attributes.h"
#include "host_error.h"
#include "open_files.h"

#include "ce/error.h"
#include "ce/file.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

namespace platform::file {

namespace {

Deleted deleteFound(const HostPlace& place, int folder, const HostStatus& status, const OpenFiles& table)
{
    if (const DWORD error = deletionError(place, folder, status, table))
        return {error, error == ERROR_SHARING_VIOLATION};
    place.mount->expectChange(deviceOf(status), place.parent());
    if (const int result = removeFile(folder, place.name()); result < 0)
        return {platformError(result)};
    place.mount->noteChange(deviceOf(status));
    if (status.stx_nlink == 1)
        place.mount->giveBackRoom(status.stx_size);
    return {};
}

}  // namespace

ParentFolder::ParentFolder(const HostPlace& place) : number_(place.mount->folder())
{
    if (place.nameStart == 0)
        return;
    number_ = openBelow(place.mount->folder(), place.parent().c_str(), O_PATH | O_DIRECTORY);
    if (number_ >= 0)
        opened_ = Descriptor(number_);
}

DWORD cannotBeAFile(const HostPlace& place)
{
    if (place.error != 0)
        return place.error;
    if (place.isMount())
        return ERROR_ACCESS_DENIED;
    return place.endsInBackslash ? ERROR_INVALID_NAME : 0;
}

int statusAt(const ParentFolder& parent, const HostPlace& place, HostStatus& status)
{
    if (parent.number() < 0)
        return parent.number();
    if (const int result = readStatus(parent.number(), place.name(), status); result < 0)
        return result;
    return isFile(status) || isFolder(status) ? 0 : -ELOOP;
}

DWORD errorAt(const HostPlace& place, const ParentFolder& parent, int result)
{
    const DWORD error = platformError(result);
    return error == ERROR_FILE_NOT_FOUND && parent.number() < 0 && !place.isMount() ? ERROR_PATH_NOT_FOUND : error;
}

DWORD deletionError(const HostPlace& place, int folder, const HostStatus& status, const OpenFiles& table)
{
    constexpr DWORD KeepsOut =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_ROMMODULE;
    const StoredAttributes stored =
        table.wasMadeHere(status) ? StoredAttributes{} : storedAttributes(folder, place.name(), status);
    if (stored.error != 0)
        return ioError(stored.error);
    if ((attributesOf(status, stored.bits, false) & KeepsOut) != 0)
        return ERROR_ACCESS_DENIED;
    return table.isOpen(keyOf(status)) ? ERROR_SHARING_VIOLATION : 0;
}

Attributes attributesAt(const HostPlace& place)
{
    if (place.error != 0)
        return {place.error, 0};
    // By its folder: the host gives no extended attribute of an entry that was opened by name alone.
    const ParentFolder parent(place);
    HostStatus status = {};
    if (const int result = statusAt(parent, place, status); result < 0)
        return {errorAt(place, parent, result), 0};
    if (place.endsInBackslash && !isFolder(status))
        return {ERROR_PATH_NOT_FOUND, 0};
    const bool isRoot = place.isMount() && place.mount->name().empty();
    // The host folder behind a mount may have any name: what counts is the name that it has here.
    const bool leadingPoint = place.isMount() ? place.mount->name().starts_with(u'.') : *place.name() == '.';
    const StoredAttributes stored = storedAttributes(parent.number(), place.name(), status);
    if (stored.error != 0)
        return {ioError(stored.error), 0};
    DWORD bits = attributesOf(status, stored.bits, leadingPoint);
    if (place.isMount() && !isRoot && place.mount->isCard())
        bits |= FILE_ATTRIBUTE_TEMPORARY;
    return {0, bits};
}

DWORD removeFolderAt(const HostPlace& place)
{
    if (place.error != 0)
        return place.error;
    if (place.isMount())
        return ERROR_ACCESS_DENIED;
    const ParentFolder parent(place);
    HostStatus status = {};
    if (const int result = statusAt(parent, place, status); result < 0)
        return errorAt(place, parent, result);
    if (!isFolder(status))
        return ERROR_PATH_NOT_FOUND;
    place.mount->expectChange(deviceOf(status), place.parent());
    const int result = removeEmptyFolder(parent.number(), place.name());
    place.mount->noteChange(deviceOf(status));
    return result == -ENOTEMPTY || result == -EEXIST ? ERROR_DIR_NOT_EMPTY : platformError(result);
}

DWORD makeFolderAt(const HostPlace& place)
{
    if (place.error != 0)
        return place.error;
    if (place.isMount())
        return ERROR_ALREADY_EXISTS;
    if (place.endsInBackslash)
        return ERROR_INVALID_NAME;
    const ParentFolder parent(place);
    if (parent.number() < 0)
        return errorAt(place, parent, parent.number());
    HostStatus status = {};
    if (const int result = readStatus(parent.number(), "", status); result < 0)
        return platformError(result);
    place.mount->expectChange(deviceOf(status), place.parent());
    const int result = makeFolder(parent.number(), place.name());
    if (result == 0)
        place.mount->noteChange(deviceOf(status));
    if (result == -EEXIST) {
        const int found = statusAt(parent, place, status);
        return found == 0 ? ERROR_ALREADY_EXISTS : found == -ELOOP ? ERROR_ACCESS_DENIED : platformError(found);
    }
    return result == -ENOENT ? ERROR_PATH_NOT_FOUND : platformError(result);
}

Deleted deleteFileAt(const HostPlace& place)
{
    if (const DWORD error = cannotBeAFile(place))
        return {error};
    const auto table = OpenFiles::instance();
    const auto lock = table->lock();
    TemporaryFile& temporary = table->temporary();
    if (temporary.isAt(place)) {
        if (const auto found = temporary.find()) {
            const Deleted deleted = deleteFound(place, found->folder, found->status, *table);
            temporary.letGo();
            return deleted;
        }
    }
    ParentFolder parent(place);
    HostStatus status = {};
    if (const int result = statusAt(parent, place, status); result < 0)
        return {errorAt(place, parent, result)};
    const Deleted deleted = deleteFound(place, parent.number(), status, *table);
    if (deleted.error == 0 && table->wasMadeHere(status))
        temporary.noteDeleted(place, std::move(parent));
    return deleted;
}

DWORD moveFileAt(const HostPlace& from, const HostPlace& to, bool replace)
{
    for (const HostPlace* place : {&from, &to}) {
        if (const DWORD error = cannotBeAFile(*place))
            return error;
    }
    if (from.mount != to.mount)
        return ERROR_NOT_SAME_DEVICE;
    const auto table = OpenFiles::instance();
    const auto lock = table->lock();
    table->temporary().letGo();
    const ParentFolder folder(from);
    const ParentFolder newFolder(to);
    HostStatus status = {};
    if (const int result = statusAt(folder, from, status); result < 0)
        return errorAt(from, folder, result);
    if (const DWORD error = deletionError(from, folder.number(), status, *table))
        return error;
    HostStatus replaced = {};
    const int found = statusAt(newFolder, to, replaced);
    if (newFolder.number() < 0 || (found < 0 && found != -ENOENT))
        return errorAt(to, newFolder, found);
    if (found == 0 && !replace)
        return ERROR_ALREADY_EXISTS;
    if (found == 0) {
        if (const DWORD error = deletionError(to, newFolder.number(), replaced, *table))
            return error;
        const Descriptor moved(openBelow(folder.number(), from.name(), O_RDONLY));
        if (const int result = moved.isOpen() ? takeRights(moved.number(), replaced) : -EACCES; result < 0)
            return platformError(result);
    }
    to.mount->expectChange(deviceOf(status), to.parent());
    int result = moveFile(folder.number(), from.name(), newFolder.number(), to.name(), replace);
    if (result == -EINVAL && !replace)  // where the host can't refuse: nothing stood there a moment ago
        result = moveFile(folder.number(), from.name(), newFolder.number(), to.name(), true);
    if (result < 0)
        return result == -EXDEV ? ERROR_NOT_SAME_DEVICE : platformError(result);
    to.mount->noteChange(deviceOf(status));
    if (found == 0 && replaced.stx_nlink == 1)
        to.mount->giveBackRoom(replaced.stx_size);
    return 0;
}

DWORD missingError(const HostPlace& place)
{
    const ParentFolder parent(place);
    return parent.number() < 0 ? errorAt(place, parent, parent.number()) : ERROR_FILE_NOT_FOUND;
}

bool somethingInvisibleStands(const HostPlace& place)
{
    const ParentFolder parent(place);
    HostStatus status = {};
    return parent.number() >= 0 && readStatus(parent.number(), place.name(), status) == 0 && !isFile(status) &&
           !isFolder(status);
}

}  // namespace platform::file

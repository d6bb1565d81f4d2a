#include "entries.h"

#include "attributes.h"
#include "host/error.h"
#include "open_files.h"
#include "parent_folder.h"

#include "ce/error.h"
#include "ce/file.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

namespace platform::file {

using host::ioError;
using host::platformError;

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
    const StoredAttributes stored = storedAttributes(parent.get(), place.name(), status);
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
    const int result = removeEmptyFolder(parent.get(), place.name());
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
    if (parent.get() < 0)
        return errorAt(place, parent, parent.get());
    HostStatus status = {};
    if (const int result = readStatus(parent.get(), "", status); result < 0)
        return platformError(result);
    place.mount->expectChange(deviceOf(status), place.parent());
    const int result = makeFolder(parent.get(), place.name());
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
    const Deleted deleted = deleteFound(place, parent.get(), status, *table);
    if (deleted.error == 0 && table->wasMadeHere(status))
        temporary.noteDeleted(place, std::move(parent));
    return deleted;
}

}  // namespace platform::file

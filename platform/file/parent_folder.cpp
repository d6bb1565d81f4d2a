#include "parent_folder.h"

#include "attributes.h"
#include "host/error.h"

#include "ce/error.h"

#include <fcntl.h>

#include <cerrno>

namespace platform::file {

using host::platformError;

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
    if (parent.get() < 0)
        return parent.get();
    if (const int result = readStatus(parent.get(), place.name(), status); result < 0)
        return result;
    return isFile(status) || isFolder(status) ? 0 : -ELOOP;
}

DWORD errorAt(const HostPlace& place, const ParentFolder& parent, int result)
{
    const DWORD error = platformError(result);
    return error == ERROR_FILE_NOT_FOUND && parent.get() < 0 && !place.isMount() ? ERROR_PATH_NOT_FOUND : error;
}

DWORD missingError(const HostPlace& place)
{
    const ParentFolder parent(place);
    return parent.get() < 0 ? errorAt(place, parent, parent.get()) : ERROR_FILE_NOT_FOUND;
}

bool somethingInvisibleStands(const HostPlace& place)
{
    const ParentFolder parent(place);
    HostStatus status = {};
    return parent.get() >= 0 && readStatus(parent.get(), place.name(), status) == 0 && !isFile(status) &&
           !isFolder(status);
}

}  // namespace platform::file

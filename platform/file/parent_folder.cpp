#include "parent_folder.h"

#include "attributes.h"
#include "host/error.h"

#include "ce/error.h"

#include <fcntl.h>

#include <cerrno>

namespace platform::file {

using host::platformError;

ParentFolder::ParentFolder(const HostPath& path) : number_(path.mount->folder())
{
    if (path.nameStart == 0)
        return;
    number_ = openBelow(path.mount->folder(), std::string(path.folder()).c_str(), O_PATH | O_DIRECTORY);
    if (number_ >= 0)
        opened_ = Descriptor(number_);
}

int makeEntry(const HostPath& path, int flags, unsigned mode)
{
    if (const auto folder = path.mount->keptFolder(path.folder())) {
        const int result = openBelow(folder->get(), path.name(), flags, mode);
        if (result != -ENOENT)  // otherwise the folder was deleted, and there may be another one of its name
            return result;
    }
    return openBelow(path.mount->folder(), path.below.c_str(), flags, mode);
}

DWORD cannotBeAFile(const HostPath& path)
{
    if (path.error != 0)
        return path.error;
    if (path.isMount())
        return ERROR_ACCESS_DENIED;
    return path.endsInBackslash ? ERROR_INVALID_NAME : 0;
}

int statusAt(const ParentFolder& parent, const HostPath& path, HostStatus& status)
{
    if (parent.get() < 0)
        return parent.get();
    if (const int result = readStatus(parent.get(), path.name(), status); result < 0)
        return result;
    return isFile(status) || isFolder(status) ? 0 : -ELOOP;
}

DWORD errorAt(const HostPath& path, const ParentFolder& parent, int result)
{
    const DWORD error = platformError(result);
    return error == ERROR_FILE_NOT_FOUND && parent.get() < 0 && !path.isMount() ? ERROR_PATH_NOT_FOUND : error;
}

DWORD missingError(const HostPath& path)
{
    const ParentFolder parent(path);
    return parent.get() < 0 ? errorAt(path, parent, parent.get()) : ERROR_FILE_NOT_FOUND;
}

bool isOutsideNameSpace(const HostPath& path)
{
    const ParentFolder parent(path);
    HostStatus status = {};
    return parent.get() >= 0 && readStatus(parent.get(), path.name(), status) == 0 && !isFile(status) &&
           !isFolder(status);
}

}  // namespace platform::file

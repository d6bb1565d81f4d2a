#include "file/whole_file.h"

#include "attributes.h"
#include "device_path.h"
#include "open_files.h"
#include "parent_folder.h"

#include "ce/error.h"

#include <fcntl.h>

#include <cerrno>

namespace platform::file {

namespace {

// Makes the whole file in its folder, whose descriptor is `folder`. Returns 0 or a negative errno.
int makeIn(int folder, const HostPath& path, std::span<const std::byte> content)
{
    const Descriptor file(openBelow(folder, ".", O_TMPFILE | O_WRONLY, NewFileMode));
    if (!file)
        return file.get() == -EISDIR || file.get() == -EINVAL ? -EOPNOTSUPP : file.get();
    HostStatus status = {};
    if (const int result = readStatus(file.get(), "", status); result < 0)
        return result;
    if (const int result = writeAllAt(file.get(), content, 0); result < 0)
        return result;
    path.mount->expectChange(deviceOf(status), path.folder());
    const int result = nameFile(file.get(), folder, path.name());
    if (result == 0)
        path.mount->noteChange(deviceOf(status));
    return result;
}

}  // namespace

DWORD makeWholeFile(std::u16string_view devicePath, std::span<const std::byte> content)
{
    const HostPath path = resolvePath(devicePath);
    if (const DWORD error = cannotBeAFile(path))
        return error;
    if (path.mount->hasCapacity())
        return ERROR_NOT_SUPPORTED;
    OpenFiles& table = OpenFiles::instance();
    {
        const kernel::MutexLock lock(table.mutex());
        if (const DWORD error = table.nameOnTheWayTo(path))
            return error;
    }
    const kernel::SharedLock opening(table.openings());
    const ParentFolder folder(path);
    const int result = folder.get() < 0 ? folder.get() : makeIn(folder.get(), path, content);
    if (result == -EEXIST)
        return ERROR_ALREADY_EXISTS;
    return result == -EOPNOTSUPP ? DWORD{ERROR_NOT_SUPPORTED} : result < 0 ? errorAt(path, folder, result) : 0;
}

}  // namespace platform::file

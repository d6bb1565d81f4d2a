#include "host/error.h"

#include "ce/error.h"

#include <cerrno>

namespace platform::host {

DWORD platformError(long error)
{
    switch (error < 0 ? -error : error) {
    case 0:
        return ERROR_SUCCESS;
    case ENOENT:
    case ELOOP:  // a link (ELOOP), or a path that leaves the device's folder (EXDEV): reported as missing
    case EXDEV:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EISDIR:
        return ERROR_ACCESS_DENIED;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case EAGAIN:  // another process holds a lease
    case EBUSY:
    case ETXTBSY:
        return ERROR_SHARING_VIOLATION;
    case EEXIST:
        return ERROR_FILE_EXISTS;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    case EOPNOTSUPP:
        return ERROR_NOT_SUPPORTED;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:  // the file would be longer than its file system allows: reported as a full disk
        return ERROR_DISK_FULL;
    case ENOMEDIUM:
        return ERROR_NOT_READY;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    default:
        return ERROR_GEN_FAILURE;
    }
}

DWORD ioError(long error)
{
    switch (const DWORD number = platformError(error)) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_HANDLE:
    case ERROR_INVALID_PARAMETER:
    case ERROR_SHARING_VIOLATION:
        return ERROR_GEN_FAILURE;
    default:
        return number;
    }
}

}  // namespace platform::host

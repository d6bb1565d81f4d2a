#include "kernel/error_reason.h"

#include "ce/error.h"

#include <new>

namespace platform::kernel {

const char* errorReason(DWORD error)
{
    switch (error) {
    case ERROR_ACCESS_DENIED:
        return "no permission, or it is read-only";
    case ERROR_WRITE_PROTECT:
        return "the disk can't be written";
    case ERROR_NOT_READY:
        return "the card was taken out";
    case ERROR_SHARING_VIOLATION:
        return "another program uses it";
    case ERROR_DISK_FULL:
        return "the disk is full";
    case ERROR_GEN_FAILURE:
        return "the disk failed";
    case ERROR_PATH_NOT_FOUND:
        return "there is no folder for it";
    case ERROR_INVALID_NAME:
        return "no file can have that name";
    case ERROR_FILENAME_EXCED_RANGE:
        return "the name is too long";
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_TOO_MANY_OPEN_FILES:
        return "the system had no more room for it";
    default:
        return nullptr;
    }
}

std::string reasonOf(const std::exception& error)
{
    return dynamic_cast<const std::bad_alloc*>(&error) ? "there isn't enough memory" : error.what();
}

}  // namespace platform::kernel

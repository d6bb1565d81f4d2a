// file_trouble.cpp - see file_trouble.h
#include "file_trouble.h"

#include "ce/error.h"

namespace platform::file {

namespace {

bool standsInTheWay(Trouble kind, DWORD error)
{
    switch (error) {
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
        return kind == Trouble::Writing;  // something that has no place
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_ACCESS_DENIED:
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_WRITE_PROTECT:
    case ERROR_GEN_FAILURE:
    case ERROR_SHARING_VIOLATION:
    case ERROR_DISK_FULL:
        return true;
    default:
        return false;
    }
}

}  // namespace

void noteFileTrouble(Trouble kind, std::u16string_view path, DWORD error)
{
    if (standsInTheWay(kind, error))
        kernel::noteTrouble(kind, kernel::Troubled::File, path, error);
}

void noteFileMade(std::u16string_view path)
{
    kernel::forgetTrouble(Trouble::Writing, kernel::Troubled::File, path, ERROR_PATH_NOT_FOUND);
}

}  // namespace platform::file

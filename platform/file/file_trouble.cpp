// file_trouble.cpp - see file_trouble.h
#include "file_trouble.h"

#include "ce/error.h"

namespace platform::file {

namespace {

// What a program asks for in order to hear that it isn't there, or is there already.
bool isNormal(Trouble kind, DWORD error)
{
    switch (error) {
    case ERROR_SUCCESS:
    case ERROR_FILE_NOT_FOUND:
        return true;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:  // nothing can be there
    case ERROR_NO_MORE_FILES:
        return kind == Trouble::Reading;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return kind == Trouble::Writing;
    default:
        return false;
    }
}

}  // namespace

void noteFileTrouble(Trouble kind, std::u16string_view path, DWORD error)
{
    if (!isNormal(kind, error))
        kernel::noteTrouble(kind, kernel::Troubled::File, path, error);
}

void noteFileMade(std::u16string_view path)
{
    kernel::forgetTrouble(Trouble::Writing, kernel::Troubled::File, path, ERROR_PATH_NOT_FOUND);
}

}  // namespace platform::file

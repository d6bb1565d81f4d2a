#include "file_trouble.h"

#include "ce/error.h"

namespace platform::file {

namespace {

// Returns true if the error isn't a failure of the device. For both kinds, error 0 and a missing file are no failures.
// For Trouble::Reading, a missing parent folder (error 3), an invalid name (error 123) and the end of a search are no
// failures either. For Trouble::Writing, an existing file is no failure either.
bool isNormal(Trouble kind, DWORD error)
{
    switch (error) {
    case ERROR_SUCCESS:
    case ERROR_FILE_NOT_FOUND:
        return true;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:  // no file can have the name
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

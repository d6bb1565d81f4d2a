#include "file_trouble.h"

#include "ce/error.h"

namespace platform::file {

namespace {

// Returns true if the error isn't a failure of the device: it is 0, or it says only that something doesn't exist, that
// it exists already, or that a list has ended. There are exceptions: a missing parent folder (error 3) and an invalid
// name (error 123) are failures if `kind` is Trouble::Writing, and an existing file is a failure if `kind` is
// Trouble::Reading.
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

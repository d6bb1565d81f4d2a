// file_trouble.h - decides which failed calls on files are noted (kernel/troubles.h). The user sees the noted failures
// later, in a report.
#pragma once

#include "kernel/troubles.h"

#include "ce/types.h"

#include <string_view>

namespace platform::file {

using kernel::Trouble;

// Notes the failure of a call on a file or folder. Does nothing if `error` is 0 or says that the file or folder doesn't
// exist. If `kind` is Trouble::Reading, also does nothing for a missing parent folder (error 3), an invalid name (error
// 123) and the end of a search. If `kind` is Trouble::Writing, also does nothing for an existing file (errors 80 and
// 183).
void noteFileTrouble(Trouble kind, std::u16string_view path, DWORD error);

// If an earlier attempt to make the file failed because the parent folder was missing, removes the note of that
// failure. Call this function after a file was made or replaced.
void noteFileMade(std::u16string_view path);

}  // namespace platform::file

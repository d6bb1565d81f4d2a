// file_trouble.h - chooses the failed calls of this room that are reported at the end (kernel/troubles.h).
#pragma once

#include "kernel/troubles.h"

#include "ce/types.h"

#include <string_view>

namespace platform::file {

using kernel::Trouble;

// Notes the failure of a call that names a file or folder, unless the error only says that it doesn't exist, or exists
// already. For something that was to be made, a missing folder counts as a failure.
void noteFileTrouble(Trouble kind, std::u16string_view path, DWORD error);

// Call it after a file was made or replaced: an earlier failure because its folder was missing is forgotten.
void noteFileMade(std::u16string_view path);

}  // namespace platform::file

// file_trouble.h - which failures of this room's calls are told in the end (kernel's troubles.h).
#pragma once

#include "troubles.h"

#include "ce/types.h"

#include <string_view>

namespace platform::file {

using kernel::Trouble;

// Counts only what stands in the way of a file or folder that is there or is to be made: no missing one.
void noteFileTrouble(Trouble kind, std::u16string_view path, DWORD error);

// A file was made or replaced: when it wanted its folder before, that has come meanwhile.
void noteFileMade(std::u16string_view path);

}  // namespace platform::file

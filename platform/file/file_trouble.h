// file_trouble.h - which failures of this room's calls are told in the end (kernel's troubles.h).
#pragma once

#include "kernel/troubles.h"

#include "ce/types.h"

#include <string_view>

namespace platform::file {

using kernel::Trouble;

// Of a call that names a file or folder. All but a few errors count, which tell a program what it asked for: nothing is
// there, or something is there already. A place that is missing for something that is to be made counts.
void noteFileTrouble(Trouble kind, std::u16string_view path, DWORD error);

// A file was made or replaced: when it wanted its folder before, that has come meanwhile.
void noteFileMade(std::u16string_view path);

}  // namespace platform::file

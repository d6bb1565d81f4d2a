// troubles.h - which files and folders couldn't be read or written since the process started.
//
// A program hears of each failure itself, and may pass over it in silence. This is for its host, which has to tell in
// the end that something is missing. Any thread.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace platform::file {

enum class Trouble { Reading, Writing };

// Counts only what stands in the way of a file or folder that is there or is to be made: no missing one.
void noteTrouble(Trouble kind, std::u16string_view path, DWORD error);

struct Troubles {
    std::size_t paths = 0;  // that had some
    std::u16string first;   // of them; as the device names it
    DWORD error = 0;        // that it had
};

[[nodiscard]] Troubles troublesSoFar(Trouble kind);

}  // namespace platform::file

// troubles.h - what of the device couldn't be read or written since the process started.
//
// A program hears of each failure itself, and may pass over it in silence. This is for its host, which has to tell in
// the end that something is missing. Only what fails counts: nothing that isn't there, and no end that is reached. Any
// thread.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace platform::kernel {

enum class Trouble { Reading, Writing };

// What had it. DatabaseList: databases whose names nobody knows then.
enum class Troubled { File, Database, DatabaseList, Registry };

// `name` is the device's: the path of a file or folder, a database's name, empty for the others. `error` is the
// platform's number.
void noteTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

// Of something that had this error and no other before, and is done after all.
void forgetTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

struct Troubles {
    std::size_t count = 0;  // each name once
    std::u16string first;
    DWORD error = 0;  // that the first one had first; a missing folder says less than whatever else there was
};

[[nodiscard]] Troubles troublesSoFar(Trouble kind, Troubled what);

}  // namespace platform::kernel

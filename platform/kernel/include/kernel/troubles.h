// troubles.h - what of the device couldn't be read or written, and what the program reported, since the process
// started.
//
// A program hears of each failure itself, and may pass over it in silence. This is for its host, which has to tell in
// the end that something is missing. Only what fails counts: nothing that isn't there, and no end that is reached. Any
// thread.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::kernel {

// Reading and Writing are what the device's calls note by themselves. The others come from the program (ce/outcome.h).
enum class Trouble { Reading, Writing, Storing, Restoring, Deleting, Replacing, Numbering };

// What had it. DatabaseList: databases whose names nobody knows then.
enum class Troubled { File, Database, DatabaseList, Registry };

// `name` is the device's: the path of a file or folder, a database's name, empty for the others. `error` is the
// platform's number.
void noteTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

// Of something that had this error and no other before, and is done after all.
void forgetTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

// From when on troubles are asked for: since the process started, or since the last call of BeginJob.
enum class Since { Start, Job };

struct NamedTrouble {
    std::u16string name;
    DWORD error = 0;  // that it had first; a missing folder says less than whatever else there was
};

// Each name once, in the order in which they were noted; those that only wanted a folder come last.
[[nodiscard]] std::vector<NamedTrouble> troublesOf(Trouble kind, Troubled what, Since since = Since::Start);

// Called by EndJob, on the thread of the program that ends the job.
void setJobEndHandler(std::function<void(HWND owner)> handler);

}  // namespace platform::kernel

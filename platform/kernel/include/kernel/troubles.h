// troubles.h - records failures to read or write the device, and those that the program reports, since the process
// started.
//
// A program gets the error of each call, and may ignore it. main() needs the record to report at the end what is
// missing. Only failures are recorded, not that something doesn't exist or that an end is reached. Any thread.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::kernel {

// The device's calls note Reading and Writing. The program reports the others (ce/outcome.h).
enum class Trouble { Reading, Writing, Storing, Restoring, Deleting, Replacing, Reaching, Numbering };

// The kind of thing that failed. DatabaseList: the names of the databases couldn't be read.
enum class Troubled { File, Database, DatabaseList, Registry };

// `name` is the path on the device of a file or folder, the name of a database, otherwise empty. `error` is the
// platform's number.
void noteTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

// Removes the trouble if it has this error: the call has succeeded since.
void forgetTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

// Which troubles are wanted: those since the process started, or since the latest call of BeginJob.
enum class Since { Start, Job };

struct NamedTrouble {
    std::u16string name;
    DWORD error = 0;  // the first one, or the first other than a missing folder
};

// Each name once, in the order in which they were noted. Those whose error is a missing folder come last.
std::vector<NamedTrouble> troublesOf(Trouble kind, Troubled what, Since since = Since::Start);

// Sets the function that EndJob calls, on the thread that ends the job.
void setJobEndHandler(std::function<void(HWND owner)> handler);

}  // namespace platform::kernel

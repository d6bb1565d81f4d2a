// troubles.h - a record of the failures since the process started: failures to read or write the device, and failures
// that the program reports.
//
// A program gets the error of each call and may ignore it. main() uses this record to tell the user at the end what
// failed. The platform's calls don't record errors that only say that something doesn't exist, or that a file or list
// ends. But some calls that write, such as CreateFileW, record that the parent folder is missing. Any thread may use
// the record.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::kernel {

// The kinds of failures. The platform's calls for files, databases and the registry record failures of the kinds
// Reading and Writing. The program reports failures of the other kinds (ce/outcome.h).
enum class Trouble { Reading, Writing, Storing, Restoring, Deleting, Replacing, Reaching, Numbering };

// What the failed call was about. DatabaseList means the databases as a whole, for example in an enumeration, or a
// database whose name isn't known.
enum class Troubled { File, Database, DatabaseList, Registry };

// Records a failure. `name` is the path on the device for a file or folder, the name for a database, and empty
// otherwise. `error` is the platform's error number. During a search for choices (SearchForChoices in ce/outcome.h) a
// missing permission to read isn't recorded.
void noteTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

// Removes the failure that noteTrouble recorded with the same kind, subject and name, but only if its error is `error`.
// Callers use this function if a call fails at first and succeeds later.
void forgetTrouble(Trouble kind, Troubled what, std::u16string_view name, DWORD error);

// The period whose troubles are returned: since the process started, or since the latest call of BeginJob.
enum class Since { Start, Job };

struct NamedTrouble {
    std::u16string name;
    // The first error other than error 3 (a missing folder), or error 3 if there is no other. If a later job has
    // recorded the failure again, the error is from that job.
    DWORD error = 0;
};

// Returns each name once, in the order in which the failures were recorded. Names whose error is a missing folder come
// last.
std::vector<NamedTrouble> troublesOf(Trouble kind, Troubled what, Since since = Since::Start);

// Sets the function that EndJob calls, on the thread that ends the job.
void setJobEndHandler(std::function<void(HWND owner)> handler);

}  // namespace platform::kernel

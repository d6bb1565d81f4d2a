// declared_temporary.h - the file that the program declared to be temporary (DeclareTemporaryFile).
//
// Such a file gets a mark when it is made. The mark stays with it, so that a file which a killed process left is
// recognised whatever its name.
#pragma once

#include "device_path.h"

#include <optional>

namespace platform::file {

// The path at which the next file that is made is temporary. A declaration is used up by one file: a file that the user
// later puts at the same path isn't temporary. The lock of the table of open files guards it.
class DeclaredTemporary {
public:
    void declare(const HostPath& path) { path_ = path; }
    void withdraw() { path_.reset(); }

    // Whether the file that was just made at this path is the declared one. If so, the declaration is used up.
    [[nodiscard]] bool take(const HostPath& path);

private:
    std::optional<HostPath> path_;
};

// Marks a file that was just made. On a file system without extended attributes it stays unmarked, and so stays in the
// name space after a kill.
void markTemporary(int file);

bool isMarkedTemporary(int folder, const char* name);

}  // namespace platform::file

// declared_temporary.h - the file that the program declared to be temporary (DeclareTemporaryFile). When it is made it
// gets a mark that stays with it, so that one which a killed process left is known, whatever its name.
#pragma once

#include "device_path.h"

#include <optional>

namespace platform::file {

// The path at which the next file that is made is temporary. A declaration is for one file, so that a file of the same
// name which the user brings later is no temporary one. Guarded by the lock of the table of open files.
class DeclaredTemporary {
public:
    void declare(const HostPlace& place) { place_ = place; }
    void withdraw() { place_.reset(); }

    // Whether a file that was just made at the place is the declared one. If it is, the declaration is used up.
    [[nodiscard]] bool take(const HostPlace& place);

private:
    std::optional<HostPlace> place_;
};

// Marks a file that was just made. A file system without extended attributes takes no mark: such a file stays after a
// kill.
void markTemporary(int file);

}  // namespace platform::file

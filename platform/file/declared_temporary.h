// declared_temporary.h - files that the program declared to be temporary (DeclareTemporaryFile). Each one that is made
// gets a mark that stays with it, so that one which a killed process left is known, whatever its name.
#pragma once

#include "device_path.h"

#include <set>
#include <string>
#include <utility>

namespace platform::file {

// The declared paths of this process. Guarded by the lock of the table of open files.
class DeclaredTemporaries {
public:
    void declare(const HostPlace& place) { places_.insert(keyOf(place)); }
    [[nodiscard]] bool contains(const HostPlace& place) const { return places_.contains(keyOf(place)); }
    void forget() { places_.clear(); }

private:
    using Key = std::pair<const MountedFolder*, std::string>;
    static Key keyOf(const HostPlace& place) { return {place.mount.get(), place.path}; }

    std::set<Key> places_;
};

// Marks a file that was just made. A file system without extended attributes takes no mark: such a file stays after a
// kill.
void markTemporary(int file);

}  // namespace platform::file

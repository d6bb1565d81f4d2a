// entries.h - what stands at a place of the name space, and making and removing it, without opening it.
#pragma once

#include "file/device_path.h"

#include "ce/types.h"

namespace platform::file {

class OpenFiles;

struct Attributes {
    DWORD error = 0;
    DWORD bits = 0;
};

[[nodiscard]] Attributes attributesAt(const HostPlace& place);

// 0 or the error.
[[nodiscard]] DWORD makeFolderAt(const HostPlace& place);
[[nodiscard]] DWORD removeFolderAt(const HostPlace& place);

struct Deleted {
    DWORD error = 0;
    bool isOpenHere = false;  // then it is a handle of this process that forbids it
};

// Deletes a file that isn't open in this process.
[[nodiscard]] Deleted deleteFileAt(const HostPlace& place);

// Gives a file that isn't open in this process another place on the same mount; 0 or the error. What stands there
// already is an error, or with `replace` a file that goes in the same moment, if it could be deleted, and whose
// owner, group and mode the moved one takes.
[[nodiscard]] DWORD moveFileAt(const HostPlace& from, const HostPlace& to, bool replace);

// The error for a call that found nothing at `place`: 3 if a folder on the way is missing, the host's if that one can't
// be looked into, otherwise 2.
[[nodiscard]] DWORD missingError(const HostPlace& place);

// Does something stand there that is no part of the name space: a link, a fifo, a socket, a device?
[[nodiscard]] bool somethingInvisibleStands(const HostPlace& place);

// The folder that holds the place's entry, opened for reaching entries; the mount's own isn't opened again.
class ParentFolder {
public:
    explicit ParentFolder(const HostPlace& place);

    // A descriptor, or a negative errno.
    [[nodiscard]] int number() const { return number_; }

private:
    Descriptor opened_;
    int number_ = -1;
};

// 0 for a path that a file may have.
[[nodiscard]] DWORD cannotBeAFile(const HostPlace& place);

// What stands at the place; a negative errno if nothing does that belongs to the name space.
[[nodiscard]] int statusAt(const ParentFolder& parent, const HostPlace& place, HostStatus& status);

// The error for a negative errno of statusAt or of another call at the place.
[[nodiscard]] DWORD errorAt(const HostPlace& place, const ParentFolder& parent, int result);

// Why the file that stands at the place can't be deleted now by the rules of the name space; 0 if it can. `folder`
// holds it. Needs the table's lock.
[[nodiscard]] DWORD deletionError(const HostPlace& place, int folder, const HostStatus& status, const OpenFiles& table);

}  // namespace platform::file

// temporary_file.h - the file that a program makes, reads and deletes again and again under one path.
//
// Such a file is opened twice and deleted once within microseconds. Its descriptor is kept between these calls, and
// that of its folder for good, which spares the host half of its work. Nothing is believed of what was kept: each time
// the folder is asked whether the name still stands for the very file that the kept descriptor holds. A held inode
// can't serve a second file, so the answer is exact, and only a file that was made here is ever touched that way.
#pragma once

#include "attributes.h"
#include "device_path.h"
#include "host_calls.h"
#include "parent_folder.h"

#include <optional>

namespace platform::file {

// Under the lock of the table of open files.
class TemporaryFile {
public:
    // A file that was made here was deleted here: the next one made at that place will be temporary, too.
    void noteDeleted(const HostPlace& place, ParentFolder parent);

    // Is it the place of the temporary file?
    [[nodiscard]] bool isAt(const HostPlace& place) const;

    // A handle to the temporary file at `place` is being closed; `descriptor` reads and writes it.
    void keep(const HostPlace& place, const FileKey& key, Descriptor descriptor);

    // Closes what is kept: whatever the program does instead of opening or deleting the file again, nothing of it may
    // look in use.
    void letGo() { kept_ = Descriptor(); }

    // The folder in which the name stands for the kept file still, and what the host told about it; nothing, and
    // nothing kept any longer, if it doesn't.
    struct Found {
        int folder = -1;
        HostStatus status = {};
    };
    [[nodiscard]] std::optional<Found> find();

    // The descriptor that is kept.
    [[nodiscard]] Descriptor take() { return std::move(kept_); }

    // Forgets the place too.
    void forget();

private:
    HostPlace place_;
    std::optional<ParentFolder> parent_;
    FileKey key_;
    Descriptor kept_;
};

}  // namespace platform::file

// temporary_file.h - saves calls on the host for a file that a program makes, reads and deletes again and again at one
// path.
//
// Such a file is opened twice and deleted once within microseconds. Its descriptor is kept open between these calls,
// and that of its folder for good, which halves the calls on the host. Before each use the host is asked whether the
// name still refers to the file that the kept descriptor has open. An inode that is open isn't given to another file,
// so the answer is exact.
#pragma once

#include "attributes.h"
#include "device_path.h"
#include "host_calls.h"
#include "parent_folder.h"

#include <optional>

namespace platform::file {

// The lock of the table of open files guards it.
class TemporaryFile {
public:
    // After a file that this process made was deleted at `path`: the next file made there is treated as temporary.
    void noteDeleted(const HostPath& path, ParentFolder parent);

    // Whether `path` is that of the temporary file.
    bool isAt(const HostPath& path) const;

    // Called when a handle to the temporary file at `path` is closed; `descriptor` reads and writes the file.
    void keep(const HostPath& path, const FileKey& key, Descriptor descriptor);

    // Closes the kept descriptor. Any other call on files does so first, so that the file doesn't look in use.
    void closeKept() { kept_ = Descriptor(); }

    // The folder in which the name still refers to the kept file, and the file's status. Otherwise empty, and the
    // descriptor is closed.
    struct Found {
        int folder = -1;
        HostStatus status = {};
    };
    [[nodiscard]] std::optional<Found> find();

    // Returns the kept descriptor, which the caller then owns.
    [[nodiscard]] Descriptor take() { return std::move(kept_); }

    // Closes the descriptor and forgets the path.
    void forget();

private:
    HostPath path_;
    std::optional<ParentFolder> parent_;
    FileKey key_;
    Descriptor kept_;
};

}  // namespace platform::file

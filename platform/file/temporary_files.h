// temporary_files.h - keeps the list of paths that the program declared to be temporary (DeclareTemporaryFile), and the
// unnamed files (see below) at these paths.
//
// A temporary file is made, read and deleted within a moment, so the host (the Linux system) needn't have it. At first
// the file is unnamed: it has no directory entry on the host, and only this process sees it at its path. Its bytes are
// in memory as long as they fit there (temporary_content.h). Before a call that could notice the missing entry, the
// file gets its name on the host. From then on it is a file like any other, until it is deleted.
//
// A declaration never affects a file that exists at the path already, or that another program makes there later. If a
// file exists at the path when the path is declared, the declaration takes effect only when noteDeleted is called.
#pragma once

#include "device_path.h"
#include "host_calls.h"
#include "shared_file.h"

#include "ce/types.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace platform::file {

// OpenFiles::mutex() guards this object.
class TemporaryFiles {
public:
    // Adds the path to the declared paths, and asks the host whether something exists there.
    void declare(const HostPath& path);

    // Removes the path from the declared paths. If an unnamed file (see above) has this path, the caller must first
    // make the file's directory entry on the host.
    void withdraw(const HostPath& path);
    void withdrawAll() { declared_.clear(); }

    // Whether there is any unnamed file.
    bool areThere() const;

    // Returns the unnamed file that this process sees at the path; null if there is none.
    std::shared_ptr<SharedFile> find(const HostPath& path) const;

    // Makes an unnamed file. Null if the path isn't declared, or if a file may exist there already.
    [[nodiscard]] std::shared_ptr<SharedFile> make(const HostPath& path);

    // Records that nothing exists at the path, so that make() can make an unnamed file there. Call it after a file at
    // the path was deleted or moved away, whether the file was unnamed or on the host.
    void noteDeleted(const HostPath& path);

    // If the path is declared and directly in the root folder, sets the mark (an extended attribute, see below) on the
    // root folder. Call this function before a file is made at the path on the host. Because the folder is marked
    // before the file, even a killed process never leaves a marked file in an unmarked root folder.
    void expectMade(const HostPath& path) const;

    // If the path is declared, sets the mark (see below) on the file. Call this function after the file was made on the
    // host.
    void noteMade(const HostPath& path, int file) const;

    struct Nameless {
        HostPath path;
        std::shared_ptr<SharedFile> file;
    };
    // onTheWayTo() returns the unnamed files that must get their names before a system call with `path`: the file at
    // `path`, and a file at a parent path of `path`. inFolder() returns the unnamed files directly in `folder`. all()
    // returns all unnamed files.
    std::vector<Nameless> onTheWayTo(const HostPath& path) const;
    std::vector<Nameless> inFolder(const HostPath& folder) const;
    std::vector<Nameless> all() const;

    // Records that `file` has got its name on the host. Until noteDeleted() is called, make() makes no new file at this
    // path.
    void noteNamed(const SharedFile& file);

private:
    struct Declared {
        HostPath path;
        bool isOnHost = false;  // something may exist at the path on the host
        std::shared_ptr<SharedFile> file;
    };
    template <class Wanted>
    std::vector<Nameless> filesWhere(const Wanted& isWanted) const;
    const Declared* at(const HostPath& path) const;
    Declared* at(const HostPath& path);

    std::vector<Declared> declared_;
    std::uint64_t made_ = 0;
    TemporaryContent::Memory spare_;  // of a deleted file, for the next temporary file
};

// A temporary file that is on the host has a special extended attribute, the mark. If a killed process leaves such a
// file in the root folder, the next start recognises the file by the mark. The root folder has the mark, too, until a
// start has moved all marked files out of it. So a start searches the root folder only if the folder has the mark, or
// if the host doesn't report whether the folder has the mark. On a file system without extended attributes, neither the
// files nor the folder are marked.

// Returns whether the entry is a file that has the mark of temporary files. Empty if the host doesn't report this.
std::optional<bool> isMarkedTemporary(int folder, const char* name);

bool mayHoldMarkedFiles(int folder);
void removeMark(int folder);

}  // namespace platform::file

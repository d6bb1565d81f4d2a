// temporary_files.h - the files that the program declared to be temporary (DeclareTemporaryFile).
//
// Such a file is made, read and deleted within a moment, so the host needn't have it. The file has no name on the host,
// and its bytes are in memory as long as they fit there (temporary_content.h). Before a call that could notice the
// missing name, the file gets its name on the host. From then on it is a file like any other, until it is deleted.
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
    // Declares the path, and asks the host whether something exists there.
    void declare(const HostPath& path);

    // Ends the declaration of the path. If a nameless file is at the path, the caller must first give the file its
    // name.
    void withdraw(const HostPath& path);
    void withdrawAll() { declared_.clear(); }

    // Whether there is any nameless file.
    bool areThere() const;

    // The nameless file at exactly that path; null if there is none.
    std::shared_ptr<SharedFile> find(const HostPath& path) const;

    // Makes a nameless file. Null if the path isn't declared, or if a file may exist there already.
    [[nodiscard]] std::shared_ptr<SharedFile> make(const HostPath& path);

    // Records that nothing exists at the path, so that make() can make a nameless file there. Call it after a file at
    // the path was deleted or moved away, whether the file was nameless or on the host.
    void noteDeleted(const HostPath& path);

    // Sets the mark (see below) on the root folder, if the file's path is declared and directly in the root folder.
    // Call this function before a file is made on the host. Because the folder is marked before the file, even a killed
    // process never leaves a marked file in an unmarked root folder.
    void expectMade(const HostPath& path) const;

    // Sets the mark on the file if its path is declared. Call this function after the file was made on the host.
    void noteMade(const HostPath& path, int file) const;

    struct Nameless {
        HostPath path;
        std::shared_ptr<SharedFile> file;
    };
    // The nameless files that need their name before a call on `path`: the file at `path`, and a file at the path of a
    // folder above `path`.
    std::vector<Nameless> onTheWayTo(const HostPath& path) const;
    std::vector<Nameless> inFolder(const HostPath& folder) const;
    std::vector<Nameless> all() const;

    // Records that `file` isn't nameless any more, because it has got its name on the host. So make() makes no nameless
    // file at its path until noteDeleted() is called.
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
// if the host doesn't report whether it has one. On a file system without extended attributes, neither the files nor
// the folder are marked.

// Whether the entry is a file with the mark. Empty if the host doesn't report it.
std::optional<bool> isMarkedTemporary(int folder, const char* name);

bool mayHoldMarkedFiles(int folder);
void removeMark(int folder);

}  // namespace platform::file

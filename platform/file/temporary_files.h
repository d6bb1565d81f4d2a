// temporary_files.h - the files that the program declared to be temporary (DeclareTemporaryFile).
//
// Such a file is made, read and deleted within a moment, so the host needn't know of it: it has no name there, and its
// bytes are in memory unless they are many (temporary_content.h). It is given its name on the host before any call that
// could notice the difference, and is then a file like any other, until it is deleted.
//
// A file that something else has put at the path is never touched for it. What stood there when the path was declared
// is treated as without the declaration, until it is deleted. What appears later stays.
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

// The lock of the table of open files guards it.
class TemporaryFiles {
public:
    // Looks once whether something stands at the path.
    void declare(const HostPath& path);

    // From then on the path is an ordinary one. The caller has given a file there its name.
    void withdraw(const HostPath& path);
    void withdrawAll() { declared_.clear(); }

    // Whether there is any nameless file.
    bool areThere() const;

    // The nameless file at exactly that path; null if there is none.
    std::shared_ptr<SharedFile> find(const HostPath& path) const;

    // Makes a nameless file. Null if the path isn't declared, or something stands there.
    [[nodiscard]] std::shared_ptr<SharedFile> make(const HostPath& path);

    // The file at the path was deleted, the nameless one or that of the host.
    void noteDeleted(const HostPath& path);

    // A file is about to be made on the host. If its path is declared and in the root folder, marks that folder, so
    // that a killed process leaves no marked file in a root without the mark.
    void expectMade(const HostPath& path) const;

    // The file was made. Marks it if its path is declared.
    void noteMade(const HostPath& path, int file) const;

    struct Nameless {
        HostPath path;
        std::shared_ptr<SharedFile> file;
    };
    // The nameless files that a call on `path` concerns: the one there, and one that would be a folder of that path.
    std::vector<Nameless> onTheWayTo(const HostPath& path) const;
    std::vector<Nameless> inFolder(const HostPath& folder) const;
    std::vector<Nameless> all() const;

    // The file has got its name.
    void noteNamed(const SharedFile& file);

private:
    struct Declared {
        HostPath path;
        bool isOnHost = false;  // something can stand at the path
        std::shared_ptr<SharedFile> file;
    };
    template <class Wanted>
    std::vector<Nameless> filesWhere(const Wanted& isWanted) const;
    const Declared* at(const HostPath& path) const;
    Declared* at(const HostPath& path);

    std::vector<Declared> declared_;
    std::uint64_t made_ = 0;
    TemporaryContent::Memory spare_;  // of the file that was deleted last
};

// A file on the host has a mark. If a killed process leaves it in the root, it is recognised by the mark whatever its
// name is. The root folder is marked too, until a start has searched it. So a start searches it only if there can be
// such a file. On a file system without extended attributes both stay unmarked.

// Nothing if the host can't say.
std::optional<bool> isMarkedTemporary(int folder, const char* name);

bool mayHoldMarkedFiles(int folder);
void removeMark(int folder);

}  // namespace platform::file

// set_care.h - writes the checksums of a new set and removes old sets. Both are optional steps of a backup, which
// follow when the backup has written the set.
#pragma once

#include "command_session.h"

#include "archive/seal.h"

#include <string>
#include <vector>

namespace platform::device {

enum class SealEnd { NotTried, Sealed, Failed, Stopped };

// Writes the checksums of a set that the run has just written. After a failure, prints the reason to standard error.
// `listPath` is the path of the set's list file on the device. `data` is the digest of the data file, if it is known
// already.
[[nodiscard]] SealEnd sealNewSet(const Session& session, const std::u16string& listPath,
                                 const std::optional<archive::FileDigest>& data);

struct Rotation {
    std::vector<std::string> removed;  // paths of their list files on the host
    bool isWhole = true;               // false: something failed, and standard error says what
    bool isStopped = false;
};

// Removes old sets from the folder of the new set, unless one of the rules keeps them. Never removes the new set, a
// damaged set or the newest sound set.
[[nodiscard]] Rotation rotateSets(const Session& session, const std::u16string& listPath,
                                  const archive::KeepRules& rules);

}  // namespace platform::device

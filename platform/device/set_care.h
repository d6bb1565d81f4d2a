// set_care.h - what a backup does with a set when it is on its storage.
#pragma once

#include "command_session.h"

#include "archive/seal.h"

#include <string>
#include <vector>

namespace platform::device {

enum class SealEnd { NotTried, Sealed, Failed, Stopped };

// Writes the checksums of a set that the run has just written. After a failure, standard error has the reason.
// `listPath` is on the device. `data` is the digest of the data file, as far as it is known.
[[nodiscard]] SealEnd sealNewSet(const Session& session, const std::u16string& listPath,
                                 const std::optional<archive::FileDigest>& data);

struct Rotation {
    std::vector<std::string> removed;  // list files on the host
    bool isWhole = true;               // otherwise standard error says what is wrong
    bool isStopped = false;
};

// Removes the sets beside the new one that no rule keeps. The new set, damaged sets and the newest sound set stay.
[[nodiscard]] Rotation rotateSets(const Session& session, const std::u16string& listPath,
                                  const archive::KeepRules& rules);

}  // namespace platform::device

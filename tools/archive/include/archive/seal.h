// seal.h - the file with the checksums of a set, QLBX0001.SUM beside QLBX0001.QLT, in the format of sha256sum.
#pragma once

#include "archive/digest.h"
#include "archive/set_files.h"

#include <optional>
#include <string>
#include <vector>

namespace archive {

struct SealCheck {
    bool isSealed = false;            // there is a file with checksums, good or bad
    std::vector<std::string> faults;  // what differs from it
};

// Reads both files of the set if it is sealed.
SealCheck checkSeal(const SetFiles& files, const MountedSet& mounted);

// Writes the checksums of the set as it stands, without a check of it. They replace older ones. Returns ERROR_SUCCESS
// or the error.
[[nodiscard]] DWORD writeSeal(const SetFiles& files, const MountedSet& mounted);

struct SealOutcome {
    bool isSealed;
    std::string text;  // for the user
};

// Checks the set and writes its checksums. With `force` also if it has changed since it was sealed.
SealOutcome sealSet(const SetFiles& files, bool force);

}  // namespace archive

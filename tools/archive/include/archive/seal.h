// seal.h - the file with the checksums of a set, QLBX0001.SUM beside QLBX0001.QLT, in the format of sha256sum.
#pragma once

#include "archive/digest.h"
#include "archive/set_files.h"

#include <optional>
#include <string>
#include <vector>

namespace archive {

// The SHA-256 of a file of the name space. Nothing if it can't be read to its end.
std::optional<Digest> digestOfFile(const std::u16string& path);

// The lines of the file for these digests. A name with a backslash or a line break is escaped as sha256sum does it.
std::string sealText(const SetFiles& files, const Digest& list, const Digest& data);

struct SealCheck {
    bool isSealed = false;            // there is a file with checksums, good or bad
    std::vector<std::string> faults;  // what differs from it
};

// Reads both files of the set if it is sealed.
SealCheck checkSeal(const SetFiles& files, const MountedSet& mounted);

}  // namespace archive

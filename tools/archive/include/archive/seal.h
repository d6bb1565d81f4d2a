// seal.h - the file with the checksums of a set, QLBX0001.SUM beside QLBX0001.QLT, in the format of sha256sum.
#pragma once

#include "archive/digest.h"
#include "archive/set_files.h"

#include <optional>
#include <string>
#include <vector>

namespace archive {

struct SealCheck {
    bool isSealed = false;            // there is a file with checksums, even if it can't be read
    std::vector<std::string> faults;  // what differs from the file with checksums
};

// Compares the set with its checksums. Reads both files of the set if it is sealed.
SealCheck checkSeal(const SetFiles& files, const MountedSet& mounted);

// Returns whether the set is sealed and the checksum of its data file is right. The checksum of the list file isn't
// checked. For a sealed set the call can take long, because it reads the whole data file.
bool sealProvesData(const SetFiles& files, const MountedSet& mounted);

struct SetDigests {
    Digest list;
    Digest data;
};

struct FileDigest {
    Digest digest;
    std::uint64_t bytes;  // size of the file
};

// Returns the digests of both files of the set, or nothing if one of them can't be read to its end. If `data->bytes`
// equals the size of the data file, the function returns `data->digest` for that file without reading the file.
std::optional<SetDigests> digestsOf(const MountedSet& mounted, const std::optional<FileDigest>& data = std::nullopt);

// Writes the file with these checksums, and replaces an older one. Returns ERROR_SUCCESS or the error.
[[nodiscard]] DWORD writeSeal(const SetFiles& files, const MountedSet& mounted, const SetDigests& digests);

}  // namespace archive

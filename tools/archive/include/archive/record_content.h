// record_content.h - computes which properties a restore stores for a record of a database image, and computes the
// digest of a record.
#pragma once

#include "archive/digest.h"

#include "ce/store.h"

#include <span>
#include <vector>

namespace archive {

// Returns the properties that the device's object store contains after a restore has written `record`. Their values
// point to the texts and blobs of `record`.
std::vector<CEPROPVAL> restoredRecord(std::span<const CEPROPVAL> record);

// Returns whether a database image can store the value of this property. That depends on the property's type. For some
// types, an image has only the id and the flags of the property.
bool setKeepsValue(const CEPROPVAL& property);

// Records have the same digest if they have the same properties with the same flags and values, in any order. The
// digest ignores each value for which setKeepsValue() returns false.
class RecordHasher {
public:
    Digest hash(std::span<const CEPROPVAL> record);

private:
    Sha256 hash_;
    std::vector<CEPROPVAL> ordered_;
    std::vector<std::byte> bytes_;
};

}  // namespace archive

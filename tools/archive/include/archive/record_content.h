// record_content.h - computes what a restore stores of a record of an image, and a digest of a record.
#pragma once

#include "archive/digest.h"

#include "ce/store.h"

#include <span>
#include <vector>

namespace archive {

// Returns the properties that the device's object store contains after a restore has written `record`. Their values
// point to the texts and blobs of `record`.
std::vector<CEPROPVAL> restoredRecord(std::span<const CEPROPVAL> record);

// Returns whether an image can store a value of this type. For other types, an image has only the id and the flags.
bool setKeepsValue(const CEPROPVAL& property);

// Records have the same digest if they have the same properties with the same flags and values, in any order. Values
// that an image can't hold are ignored.
class RecordHasher {
public:
    Digest hash(std::span<const CEPROPVAL> record);

private:
    Sha256 hash_;
    std::vector<CEPROPVAL> ordered_;
    std::vector<std::byte> bytes_;
};

}  // namespace archive

// record_content.h - the content of a record, as far as a set can hold it.
#pragma once

#include "archive/digest.h"

#include "ce/store.h"

#include <span>
#include <vector>

namespace archive {

// The properties that the store of a device contains after a restore has written this record. They point to the texts
// and blobs of `record`.
std::vector<CEPROPVAL> restoredRecord(std::span<const CEPROPVAL> record);

// Whether an image holds values of this type. Of others it keeps only the id and the flags.
bool setKeepsValue(const CEPROPVAL& property);

// Records have the same digest if they have the same properties with the same flags and values, in any order. Values
// that an image can't hold don't count.
class RecordHasher {
public:
    Digest hash(std::span<const CEPROPVAL> record);

private:
    Sha256 hash_;
    std::vector<CEPROPVAL> ordered_;
    std::vector<std::byte> bytes_;
};

}  // namespace archive

// record_bytes.h - the bytes of a record in the device's database.
//
// A record is a sequence of properties: id (4 bytes), flags (2), value. Integers are little-endian. The value has 2, 4
// or 8 bytes, according to its type. A text or blob is its size in characters or bytes (4), then that many, without a
// NUL. A value of an unknown type is the 16 bytes of CEVALUNION. The flags CEDB_PROPNOTFOUND and CEDB_PROPDELETE aren't
// stored. Older files may have the first, which is ignored.
#pragma once

#include "ce/store.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace platform::store {

using RecordBytes = std::vector<std::byte>;
using RecordView = std::span<const std::byte>;

// One property within the bytes of a record.
struct PropertyView {
    CEPROPID id = 0;
    WORD flags = 0;
    RecordView value;      // a text or blob without its size
    RecordView whole;      // id, flags, size and value
    bool missing = false;  // requested, but the record doesn't have it
};
using PropertyViews = std::vector<PropertyView>;

// The properties of a record. Nothing if the bytes are damaged, or have more than MaxRecordContent.
[[nodiscard]] std::optional<PropertyViews> propertiesOf(RecordView record);

// The properties of the given ids, in the order of the ids. Missing ones are marked. Nothing if all are missing.
[[nodiscard]] std::optional<PropertyViews> pick(const PropertyViews& properties, std::span<const CEPROPID> ids);

// The record after the changes: each replaces a property, appends it or removes it (CEDB_PROPDELETE). Nothing if a text
// or blob is null, for more than 65535 properties or for more than MaxRecordContent.
[[nodiscard]] std::optional<RecordBytes> withChanges(const PropertyViews& properties,
                                                     std::span<const CEPROPVAL> changes);

// The block that CeReadRecordProps returns: CEPROPVALs, then texts and blobs. blockBytes is its size in bytes, and
// fillBlock writes it.
[[nodiscard]] std::size_t blockBytes(const PropertyViews& properties);
void fillBlock(const PropertyViews& properties, BYTE* block);

}  // namespace platform::store

// record_bytes.h - the bytes of a record in the device's database.
//
// A record is a sequence of properties: id (4 bytes), flags (2), value. Integers are little-endian. The value has 2, 4
// or 8 bytes, according to its type. A text or blob begins with its size (4 bytes), which is the number of characters
// of a text or the number of bytes of a blob. The content follows without a NUL. A value of an unknown type is the 16
// bytes of CEVALUNION. The flags CEDB_PROPNOTFOUND and CEDB_PROPDELETE aren't stored. An older file may contain
// CEDB_PROPNOTFOUND, and reading ignores this flag.
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

// Returns the properties of a record. Returns nothing if the bytes are damaged, if there are more than 65535
// properties, or if texts and blobs together have more than MaxRecordContent bytes.
[[nodiscard]] std::optional<PropertyViews> propertiesOf(RecordView record);

// Returns the properties with the given ids, in the order of the ids. Those that the record doesn't have are marked as
// missing. Returns nothing if all are missing.
[[nodiscard]] std::optional<PropertyViews> pick(const PropertyViews& properties, std::span<const CEPROPID> ids);

// Returns the bytes of the record after the changes. A change replaces a property, appends it or, with CEDB_PROPDELETE,
// removes it. Returns nothing if the pointer to a text is null, or if the pointer to a blob is null although the blob's
// size isn't 0. Also returns nothing if there are more than 65535 properties, or if texts and blobs together have more
// than MaxRecordContent bytes.
[[nodiscard]] std::optional<RecordBytes> withChanges(const PropertyViews& properties,
                                                     std::span<const CEPROPVAL> changes);

// CeReadRecordProps returns a block of CEPROPVALs, followed by their texts and blobs. blockBytes returns the size of
// this block in bytes, and fillBlock writes it.
[[nodiscard]] std::size_t blockBytes(const PropertyViews& properties);
void fillBlock(const PropertyViews& properties, BYTE* block);

}  // namespace platform::store

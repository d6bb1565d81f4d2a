// record_bytes.h - a record as the bytes that the device's database keeps of it.
//
// Property follows property: id (4 bytes), flags (2), value, the integers little-endian. The value takes 2, 4
// or 8 bytes by its type; a text or blob is its size in characters or bytes (4), then that many, without a
// NUL. Of a type that nobody knows it is the 16 bytes of CEVALUNION as they stood. CEDB_PROPNOTFOUND and
// CEDB_PROPDELETE are no flags of what is stored: older files may have the first, and it isn't read.
#pragma once

#include "ce/store.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace platform::store {

using RecordBytes = std::vector<std::byte>;
using RecordView = std::span<const std::byte>;

// One property where it stands in a record's bytes.
struct PropertyView {
    CEPROPID id = 0;
    WORD flags = 0;
    RecordView value;  // of a text or blob: without its size
    RecordView whole;
    bool missing = false;  // asked for and not there
};
using PropertyViews = std::vector<PropertyView>;

// The properties of a record, none of them twice. Nothing if the bytes are damaged, or have more than MaxRecordContent.
[[nodiscard]] std::optional<PropertyViews> propertiesOf(RecordView record);

// The asked ones in their order, the missing ones marked; nothing if none is there.
[[nodiscard]] std::optional<PropertyViews> pick(const PropertyViews& properties, std::span<const CEPROPID> ids);

// A record with properties replaced, added behind the others and taken away (CEDB_PROPDELETE). Nothing if a
// text or blob is null, for more properties than a WORD counts or for more than MaxRecordContent.
[[nodiscard]] std::optional<RecordBytes> withChanges(const PropertyViews& properties,
                                                     std::span<const CEPROPVAL> changes);

// The block that a reader gets: CEPROPVALs, then texts and blobs. Its size in bytes, and its making.
[[nodiscard]] std::size_t blockBytes(const PropertyViews& properties);
void fillBlock(const PropertyViews& properties, BYTE* block);

}  // namespace platform::store

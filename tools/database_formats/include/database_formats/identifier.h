// identifier.h - the UID of a record in vCard and iCalendar. Other programs recognise an item by its UID.
#pragma once

#include "ce/store.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace database_formats {

// Makes the UIDs of a database's records. Call one of the functions for each record, in the order of the database. The
// records of an unchanged database then get the same UIDs in each export.
class Identifiers {
public:
    // Returns the record's own UID, which comes from another program or from an earlier export. If the record has no
    // UID of its own, returns ofContent().
    std::string of(std::span<const CEPROPVAL> record);
    // Returns a UID that is computed from all properties of the record except its own UID. The UID also contains the
    // number of equal records so far, so equal records get different UIDs.
    std::string ofContent(std::span<const CEPROPVAL> record);

private:
    std::unordered_map<std::uint64_t, std::size_t> equalRecords_;
    // The records' own UIDs that of() has returned so far. ofContent() returns none of them. A record's own UID can
    // come from an earlier export, which computed it from the content that the record had then. If another record has
    // this content now, ofContent() could compute the same UID for it.
    std::unordered_set<std::string> used_;
};

// Returns the property with this id. Null if there is none.
const CEPROPVAL* propertyIn(std::span<const CEPROPVAL> properties, CEPROPID id);

}  // namespace database_formats

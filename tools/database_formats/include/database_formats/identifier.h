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

// Returns the UIDs of a database's records. For each record, call one of the functions. The records must come in the
// order of the database.
class Identifiers {
public:
    // Returns the record's own UID, which comes from another program or from an earlier export. If the record has no
    // UID of its own, returns ofContent().
    std::string of(std::span<const CEPROPVAL> record);
    // Returns a UID that is computed from the record's properties without its own UID. The UID also contains the number
    // of equal records so far, so equal records get different UIDs.
    std::string ofContent(std::span<const CEPROPVAL> record);

private:
    std::unordered_map<std::uint64_t, std::size_t> equalRecords_;
    // The own UIDs of the records so far. ofContent() returns none of them. Without this check, the own UID of a record
    // that was changed could equal a UID that is computed later.
    std::unordered_set<std::string> used_;
};

// Returns the property with this id. Null if there is none.
const CEPROPVAL* propertyIn(std::span<const CEPROPVAL> properties, CEPROPID id);

}  // namespace database_formats

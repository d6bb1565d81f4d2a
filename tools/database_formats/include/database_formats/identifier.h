// identifier.h - the UID of a record in vCard and iCalendar. Other programs recognise an item by it.
#pragma once

#include "ce/store.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace database_formats {

// Gives the records of a database their UIDs, one after another in the order of the database.
class Identifiers {
public:
    // The UID that the record has from another program, or otherwise one of its content.
    std::string of(std::span<const CEPROPVAL> record);
    // Depends only on the content of the record besides its UID. Equal records are numbered.
    std::string ofContent(std::span<const CEPROPVAL> record);

private:
    std::unordered_map<std::uint64_t, std::size_t> equalRecords_;
    std::unordered_set<std::string> used_;  // of records that were changed after they got a UID of their content
};

// The property with this id. Null if there is none.
const CEPROPVAL* propertyIn(std::span<const CEPROPVAL> properties, CEPROPID id);

}  // namespace database_formats

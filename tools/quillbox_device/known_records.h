// known_records.h - recognises records of a file that a database has already, by their UIDs or their content.
#pragma once

#include "database_formats/identifier.h"

#include "ce/store.h"

#include <deque>
#include <span>
#include <string>
#include <unordered_map>

namespace quillbox_device {

enum class Taken { Added, Changed, Unchanged };

class KnownRecords {
public:
    // Nothing is known of a database that was just made.
    KnownRecords() = default;
    // Knows the records of the database. Throws a Failure.
    explicit KnownRecords(CEOID database);

    // Stores the record through the handle, which must be one on the database. A record that the database has isn't
    // added a second time. If its UID is the same but its content has changed, the database's record gets the changes:
    // its other properties stay, except those that the usual fields of its type would give. Throws a FormatFault.
    Taken store(HANDLE database, DWORD type, std::span<const CEPROPVAL> record);

private:
    // The records of each UID and each content, the oldest first. A record that was recognised once isn't again.
    std::unordered_map<std::string, std::deque<CEOID>> byIdentifier_;
    std::unordered_map<CEOID, bool> recognised_;
    database_formats::Identifiers incoming_;
};

}  // namespace quillbox_device

// known_records.h - finds out which records of an imported file a database already has. Compares UIDs and content.
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
    // For a database that was just made and has no records.
    KnownRecords() = default;
    // Reads the records of the database, to recognise them. Throws a Failure if that fails.
    explicit KnownRecords(CEOID database);

    // Stores the record through `database`, which must be a handle of the same database. If the record has a UID of its
    // own, looks for a record of the database that has this UID or gets it in an export (identifier.h). Otherwise looks
    // for one with the same content. If there is none, adds the record. If there is one and its content differs, the
    // stored record gets the changed properties. A stored property that `record` lacks is deleted only if it is a usual
    // property of the database type `type`. Bytes that aren't a text, and numbers that are 0, are never deleted. Throws
    // a FormatFault if a record can't be read or written.
    Taken store(HANDLE database, DWORD type, std::span<const CEPROPVAL> record);

private:
    // The database's records by UID. Each record is listed under its own UID, if it has one, and under the UID that is
    // computed from its content. The records of a UID are in the order of the database. Once a record was recognised,
    // no further record of the file can match it.
    std::unordered_map<std::string, std::deque<CEOID>> byIdentifier_;
    std::unordered_map<CEOID, bool> recognised_;
    database_formats::Identifiers incoming_;
};

}  // namespace quillbox_device

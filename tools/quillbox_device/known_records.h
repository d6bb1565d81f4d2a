// known_records.h - finds out which records of a file a database already has. Compares UIDs and content.
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
    // Reads the records of the database, to recognise them. Throws a Failure.
    explicit KnownRecords(CEOID database);

    // Stores the record through `database`, which must be a handle of the same database. If the database has a record
    // with the same UID or the same content, the function adds no second one. If the UID is the same but the content
    // differs, the stored record gets the changed properties. A stored property that `record` lacks is deleted only if
    // it is a usual property of the database type `type`. Bytes that aren't a text, and numbers that are 0, are never
    // deleted. Throws a FormatFault.
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

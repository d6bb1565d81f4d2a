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
    // Reads the records of the database, so that store() recognises them. Throws a Failure if that fails.
    explicit KnownRecords(CEOID database);

    // Stores the record through `database`, a handle of the database that this object was made for. If `record` has a
    // UID of its own, looks for a stored record with this UID. This can be the stored record's own UID, or the one that
    // an export computes from its content (identifier.h). If `record` has no UID, looks for a stored record with the
    // same content. If none is found, adds `record`. If one is found and its content differs, the stored record gets
    // the changed properties. A stored property that `record` lacks is deleted only if it is a usual property of the
    // database type `type`. Bytes that aren't a text, and numbers that are 0, are never deleted. Throws a FormatFault
    // if a record can't be read or written.
    Taken store(HANDLE database, DWORD type, std::span<const CEPROPVAL> record);

private:
    // The database's records by UID. Each record is listed under its own UID, if it has one, and under the UID that is
    // computed from its content. The records of a UID are in the order of the database. Each of them matches at most
    // one record of the imported file.
    std::unordered_map<std::string, std::deque<CEOID>> byIdentifier_;
    std::unordered_map<CEOID, bool> recognised_;
    database_formats::Identifiers incoming_;
};

}  // namespace quillbox_device

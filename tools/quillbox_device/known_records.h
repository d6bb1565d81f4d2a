// known_records.h - recognises records of a file that a database already has, by their UIDs or their content.
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

    // Stores the record through `database`, which must be a handle of the same database. A record that the database
    // already has isn't added a second time. If the UID is the same but the content differs, the record in the database
    // gets the changed properties. If it has properties that `record` lacks, the usual properties of the type are
    // deleted, except bytes that aren't a text. The others stay. Throws a FormatFault.
    Taken store(HANDLE database, DWORD type, std::span<const CEPROPVAL> record);

private:
    // The records of each UID and of each content, the oldest first. Each record is recognised only once.
    std::unordered_map<std::string, std::deque<CEOID>> byIdentifier_;
    std::unordered_map<CEOID, bool> recognised_;
    database_formats::Identifiers incoming_;
};

}  // namespace quillbox_device

// database.h - the interfaces through which readers and writers of all formats pass a database: first its head (name,
// type and sort orders), then its records one by one.
//
// Readers and writers don't collect the records in memory. A database can come from an object store, a set or a file,
// and go to an object store or a file.
#pragma once

#include "database_formats/format_fault.h"

#include "ce/store.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace database_formats {

struct DatabaseHead {
    std::u16string name;
    DWORD type = 0;
    std::vector<SORTORDERSPEC> sort;
};

class DatabaseWriter {
public:
    DatabaseWriter() = default;
    DatabaseWriter(const DatabaseWriter&) = delete;
    DatabaseWriter& operator=(const DatabaseWriter&) = delete;
    virtual ~DatabaseWriter() = default;

    // Begins a database. The records that are added after this call are its records. Throws a FormatFault if the format
    // can't hold the database.
    virtual void begin(const DatabaseHead& head) = 0;
    // Adds a record. Throws a FormatFault if the format can't hold it.
    virtual void add(std::span<const CEPROPVAL> properties) = 0;
    // Completes the file after the last record of the last database. Throws a FormatFault if the file can't be
    // completed, for example because the format needs a database and none was begun.
    virtual void finish() = 0;
};

// Receives what a reader finds. begin() and add() may throw a FormatFault, which ends the reading.
class DatabaseTarget {
public:
    DatabaseTarget() = default;
    DatabaseTarget(const DatabaseTarget&) = delete;
    DatabaseTarget& operator=(const DatabaseTarget&) = delete;
    virtual ~DatabaseTarget() = default;

    // Begins a database. Returns the number that the caller passes to add() for its records.
    virtual std::size_t begin(const DatabaseHead& head) = 0;
    // Adds a record with at least one property. Its texts and blobs are valid only during the call.
    virtual void add(std::size_t database, std::span<const CEPROPVAL> properties) = 0;
};

}  // namespace database_formats

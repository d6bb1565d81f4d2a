// database.h - a database as readers and writers of all formats pass it: its head, then one record after another.
//
// Neither of them keeps records, so the databases can come from and go to a store, a set or a file.
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

    // Begins a database; what is added from then on are its records. Throws a FormatFault for one that the format can't
    // hold.
    virtual void begin(const DatabaseHead& head) = 0;
    virtual void add(std::span<const CEPROPVAL> properties) = 0;
    // Behind the last record of the last database; a file without it is not whole.
    virtual void finish() = 0;
};

// Where a reader puts what it finds. Either function may throw a FormatFault, which ends the reading.
class DatabaseTarget {
public:
    DatabaseTarget() = default;
    DatabaseTarget(const DatabaseTarget&) = delete;
    DatabaseTarget& operator=(const DatabaseTarget&) = delete;
    virtual ~DatabaseTarget() = default;

    // A database begins. The result names it in add.
    virtual std::size_t begin(const DatabaseHead& head) = 0;
    // At least one property; texts and blobs are good for the call alone.
    virtual void add(std::size_t database, std::span<const CEPROPVAL> properties) = 0;
};

}  // namespace database_formats

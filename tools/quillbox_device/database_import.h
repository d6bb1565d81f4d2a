// database_import.h - imports databases, which a reader has found in a file, into the open device.
#pragma once

#include "database_handle.h"
#include "known_records.h"
#include "stored_databases.h"

#include "database_formats/database.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

namespace quillbox_device {

// What an import does to a database that exists already on the device.
enum class Existing { Refused, Replaced, AddedTo };

class DatabaseImport : public database_formats::DatabaseTarget {
public:
    // With `name`, the file must contain one database, which is imported under this name. `formatHasHeads` says whether
    // the format contains names, types and sort orders of databases. Without them, a replaced database keeps its own
    // type and sort orders. If there is also no `name`, the records go to the device's database of their type.
    DatabaseImport(const std::optional<std::string>& name, Existing existing, bool formatHasHeads);

    // begin() and add() throw a FormatFault or a Failure. Some earlier changes then remain in the device's database, so
    // the caller must discard the database.
    std::size_t begin(const database_formats::DatabaseHead& head) override;
    void add(std::size_t database, std::span<const CEPROPVAL> properties) override;

    // Throws a FormatFault if the store has lost something that was written.
    void finish();

    // Returns one line about the result for each database: "Contacts Database: 12 records replaced by 3".
    std::string summary() const;

    // Returns the names of imported databases that can't be names of files. A backup may leave such a database out,
    // because it makes a temporary file with the name of each database.
    std::vector<std::u16string> namesOfNoFile() const;

private:
    void gatherChanges();
    void storeChanges();
    database_formats::DatabaseHead destination(database_formats::DatabaseHead head) const;
    // `old` is the database of this name on the device.
    void refuseIfUnusable(const std::u16string& wantedName, const StoredDatabase& old, DWORD typeInFile) const;

    struct Imported {
        std::u16string name;
        bool isNew;
        DWORD type;
        std::optional<std::uint64_t> replaced;  // number of records that the old database had
        std::uint64_t added = 0;
        std::uint64_t changed = 0;
        std::uint64_t unchanged = 0;
    };

    std::optional<std::u16string> name_;
    Existing existing_;
    bool formatHasHeads_;
    std::optional<std::chrono::steady_clock::time_point> gathering_;  // when the current transaction began
    std::vector<std::unique_ptr<DatabaseHandle>> databases_;
    std::vector<KnownRecords> known_;  // of each of databases_
    std::vector<Imported> imported_;   // for each of databases_
    std::unordered_set<CEOID> made_;   // databases that this import made; the file may contain each database only once
};

}  // namespace quillbox_device

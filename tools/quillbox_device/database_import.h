// database_import.h - imports the databases of a file into the open device.
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

// What an import does if the device already has a database of the same name.
enum class Existing { Refused, Replaced, AddedTo };

class DatabaseImport : public database_formats::DatabaseTarget {
public:
    // If `name` is given, the file must contain one database, and this database is imported under `name`.
    // `formatHasHeads` says whether the format contains the names, types and sort orders of databases. If it is false,
    // a database that is replaced keeps its type and sort orders. If in addition no `name` is given, the records go to
    // the device's database of their type, or to a new one if there is none.
    DatabaseImport(const std::optional<std::string>& name, Existing existing, bool formatHasHeads);

    // begin() and add() throw a FormatFault or a Failure. The open database file may then contain a part of the import,
    // and the caller must discard it. So the caller imports into a copy of device.db (changeAsAWhole()).
    std::size_t begin(const database_formats::DatabaseHead& head) override;
    void add(std::size_t database, std::span<const CEPROPVAL> properties) override;

    // Ends the import. Throws a FormatFault if something couldn't be stored.
    void finish();

    // Returns one line about the result for each database: "Contacts Database: 12 records replaced by 3".
    std::string summary() const;

    // Returns the names of imported databases that can't be names of files. For each database, a backup makes a
    // temporary file with the database's name. So a backup may leave out a database with a returned name.
    std::vector<std::u16string> namesOfNoFile() const;

private:
    void gatherChanges();
    void storeChanges();
    database_formats::DatabaseHead destination(database_formats::DatabaseHead head) const;
    // Throws if the import can't use `old`, which is the device's database of the name `wantedName`.
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
    std::vector<KnownRecords> known_;  // one for each of databases_
    std::vector<Imported> imported_;   // one for each of databases_
    std::unordered_set<CEOID> made_;   // databases that this import made. The file must not contain one of them again.
};

}  // namespace quillbox_device

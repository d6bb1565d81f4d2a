// database_import.h - puts the databases that a reader of a file finds into the open device.
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

// What becomes of a database that exists already on the device.
enum class Existing { Refused, Replaced, AddedTo };

class DatabaseImport : public database_formats::DatabaseTarget {
public:
    // `name`: the file must contain one database, and it is imported under this name.
    // `formatHasHeads`: the format contains names, types and sort orders of databases. Otherwise a database that is
    // replaced keeps its own type and sort orders, and without a name the import goes to the device's database of the
    // type.
    DatabaseImport(const std::optional<std::string>& name, Existing existing, bool formatHasHeads);

    // Both throw a FormatFault. Discard the device's database then, since not all of the changes before are undone.
    std::size_t begin(const database_formats::DatabaseHead& head) override;
    void add(std::size_t database, std::span<const CEPROPVAL> properties) override;

    // Throws a FormatFault if the store has lost something that was written.
    void finish();

    // What became of each database, one line for each: "Contacts Database: 12 records replaced by 3".
    std::string summary() const;

    // The names of imported databases that can't be names of files. A backup makes a temporary file of a database's
    // name, so it may leave such a database out.
    std::vector<std::u16string> namesOfNoFile() const;

private:
    void gatherChanges();
    void storeChanges();
    database_formats::DatabaseHead destination(database_formats::DatabaseHead head) const;
    // `old`: the database of this name on the device.
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
    std::optional<std::chrono::steady_clock::time_point> gathering_;  // since when changes are gathered
    std::vector<std::unique_ptr<DatabaseHandle>> databases_;
    std::vector<KnownRecords> known_;  // of each of databases_
    std::vector<Imported> imported_;   // for each of databases_
    std::unordered_set<CEOID> made_;   // by this import. A second database of the same name in the file is refused.
};

}  // namespace quillbox_device

// database_import.h - what a reader finds, put into the open store.
#pragma once

#include "commands.h"
#include "open_database.h"

#include "database_formats/database_format.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillbox_device {

class DatabaseImport : public database_formats::DatabaseTarget {
public:
    // `name`: the one database that the file may hold then. `fileTellsHead`: otherwise a database that is replaced
    // keeps its own type and sort orders, and without a name the device's database of the type is meant.
    DatabaseImport(const std::optional<std::string>& name, Existing existing, bool fileTellsHead);

    // Both throw a FormatFault.
    std::size_t begin(const database_formats::DatabaseHead& head) override;
    void add(std::size_t database, std::span<const CEPROPVAL> properties) override;

    // Throws a FormatFault if what was written isn't in the store.
    void finish();

    // What became of each database, a line each: "Contacts Database: 12 records replaced by 3".
    [[nodiscard]] std::string summary() const;

    // Names that no file can have: a backup keeps a database in a file of its name for a moment.
    [[nodiscard]] std::vector<std::u16string> namesOfNoFile() const;

private:
    [[nodiscard]] database_formats::DatabaseHead destination(database_formats::DatabaseHead head) const;

    struct Imported {
        std::u16string name;
        bool isNew;
        std::optional<std::uint64_t> replaced;  // records that the old one had
        std::uint64_t added;
    };

    std::optional<std::u16string> name_;
    Existing existing_;
    bool fileTellsHead_;
    std::vector<std::unique_ptr<OpenDatabase>> databases_;
    std::vector<Imported> imported_;  // for each of databases_
    std::vector<CEOID> made_;         // by this import: another one of the name in the file would take its place
};

}  // namespace quillbox_device

// set_tables.h - verifies a set, and puts its contents into the tables of a report.
#pragma once

#include "archive/long_work.h"
#include "archive/record_content.h"
#include "archive/set_check.h"
#include "run_table.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <ostream>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace set_report {

// Numbers texts from 0, in the order of their first use.
class NumberedTexts {
public:
    std::size_t numberOf(const std::string& text);
    // Writes an array of the texts. Each text must be JSON.
    void write(std::ostream& out) const;

private:
    std::map<std::string, std::size_t> numbers_;
    std::vector<const std::string*> texts_;
};

// The contents of all sets. docs/archive.md explains the limits on the sizes of the tables. A row of a RunTable
// consists of a head, which is the same in all sets, and of a state, which can differ from set to set. The comments
// below list the elements of both.
struct ReportTables {
    // One row for each item.
    // - Head of the row: the item's kind and name.
    // - State in one set: the number that `contents` gives to the item's content, the number of unpacked bytes, the
    //   number of packed bytes, and the fault, or 0 if there is no fault. If the content is damaged or wasn't read,
    //   the number of the content is 0 and the number of unpacked bytes is -1.
    RunTable items{std::size_t{64} * 1024 * 1024};
    // One row for each record.
    // - Head of the row: the number of the record's database (see `databases`), and an array. The array has two
    //   elements for each property: the number of its name (see `properties`) and its value.
    // - State in one set: empty.
    RunTable records{std::size_t{32} * 1024 * 1024};
    // One row for each registry key and one for each registry value.
    // - Head of the row: the path of the key, and the name of the value or null in the row of a key.
    // - State in one set: the value as a text, or 0 in the row of a key.
    RunTable values{std::size_t{16} * 1024 * 1024};

    NumberedTexts databases;                                       // each as an array: name and type
    NumberedTexts properties;                                      // the names of properties
    std::unordered_map<RowKey, std::size_t, RowKeyHash> contents;  // the numbers of contents, from 1, by their digests

    void beginSet(unsigned set);
};

class SetReading final : public archive::CheckSink {
public:
    SetReading(ReportTables& tables, archive::Progress& progress) : tables_(tables), progress_(progress) {}

    // Reads the set. Returns what the report's page shows about the set as a whole, such as its comment and its size.
    nlohmann::ordered_json read(const archive::OpenedSet& set);

    void item(const archive::Item& item) override;
    void fault(const archive::Item* item, const std::string& reason) override;
    void warning(const archive::Item* item, const std::string& reason) override;
    void begin(const archive::Item& item) override;
    void end(const archive::Item& item, const archive::ContentReport& content) override;
    bool bytes(std::span<const std::byte> piece) override;
    void head(const archive::ImageReport& image) override;
    void record(unsigned number, std::span<const CEPROPVAL> properties) override;
    bool key(const platform::registry::KeyPath& path) override;
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) override;

private:
    // What is known of the current item so far.
    struct State {
        BYTE kind = 0;
        std::u16string name;
        std::size_t content = 0;
        std::int64_t bytes = -1;
        std::uint64_t packedBytes = 0;
        std::string fault;
    };

    void finishItem();
    std::size_t contentNumber(const archive::Digest& digest);
    std::string headOf(std::span<const CEPROPVAL> record);

    ReportTables& tables_;
    archive::Progress& progress_;
    bool hasItem_ = false;
    State state_;
    std::uint64_t dataBytes_ = 0;
    std::uint64_t bytes_ = 0;
    std::uint64_t packedBytes_ = 0;
    std::uint64_t damagedItems_ = 0;
    std::vector<std::string> faults_;  // of the set as a whole
    std::vector<std::string> warnings_;

    archive::Sha256 hash_;  // of the content of the current item
    archive::RecordHasher records_;
    std::vector<archive::Digest> digests_;  // of the records of the current database
    std::size_t database_ = 0;
    std::u16string key_;  // the current key of the registry
};

}  // namespace set_report

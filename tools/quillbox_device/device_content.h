// device_content.h - the records and the registry values of the open device, and which of them sound sets hold.
#pragma once

#include "archive/record_changes.h"
#include "archive/registry_values.h"

#include "report.h"

#include "ce/store.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quillbox_device {

// How many records, and keys and values, of the device a set holds.
struct HeldContent {
    std::size_t records = 0;
    std::size_t places = 0;
};

// Keeps in memory a digest for each record, and the registry with short values.
class DeviceContent {
public:
    // Throws a Failure.
    void readDevice();

    // The content of one set is passed on between beginSet() and takeSet(), in the order of its items. Only takeSet()
    // makes it count, so don't call it for an unsound set.
    void beginSet();
    void beginDatabase();
    void head(const archive::ImageReport& image);
    void record(unsigned number, std::span<const CEPROPVAL> properties) { database_->record(number, properties); }
    void endDatabase();
    void beginRegistry();
    bool key(const platform::registry::KeyPath& path) { return registry_->key(path); }
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data)
    {
        return registry_->value(name, type, data);
    }
    // Returns what of it the device has.
    HeldContent takeSet();

    bool isCovered() const;

    // Reports each record, value and database that no set holds. Returns their number.
    std::uint64_t reportUncovered(Report& report) const;
    // Reports what a set can't hold.
    void reportNotes(Report& report) const;

private:
    struct Database {
        CEOID oid = 0;
        std::u16string name;
        DWORD type = 0;
        std::vector<std::pair<CEPROPID, DWORD>> sortOrders;
        std::vector<archive::Digest> records;    // sorted
        std::vector<archive::Digest> uncovered;  // those that no set holds as often
        bool isHeld = false;                     // a set has a database of this name, type and sort orders
    };
    // A database of the set.
    struct Held {
        Database* database;
        bool sameHead;
        std::vector<archive::Digest> records;
    };

    Database* named(std::u16string_view name);
    void readDatabases();
    void readRegistry();
    std::vector<std::string> uncoveredTitles(const Database& database) const;
    std::uint64_t reportDatabase(const Database& database, Report& report) const;

    std::vector<Database> databases_;
    std::map<archive::RegistryPlace, std::string> registryOpen_;  // what no set holds yet
    std::uint64_t valuesNotKept_ = 0;                             // of types that an image has no value for

    std::unique_ptr<archive::RecordCollector> database_;  // of the set
    std::u16string databaseName_;
    std::unique_ptr<archive::RegistryValues> registry_;
    std::vector<Held> held_;
};

}  // namespace quillbox_device

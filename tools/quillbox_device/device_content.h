// device_content.h - finds out which records and registry values of the open device are in undamaged sets.
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

// How much of the device a set contains. Content is counted only for the first compared set that contains it. `places`
// is the number of keys and values of the registry.
struct HeldContent {
    std::size_t records = 0;
    std::size_t places = 0;
};

// Compares the records and the registry of the open device with sets. To save memory, this class keeps only a digest of
// each record, and shortens long registry values.
class DeviceContent {
public:
    // Reads the records and the registry of the open device. Throws a Failure if that fails.
    void readDevice();

    // The functions from beginSet() to takeSet() take the content of one set, in the order of the set's items. At the
    // end, takeSet() records that an undamaged set contains this content. If the set is damaged, don't call takeSet().
    // key() and value() return false if the registry of the set is too large to compare.
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
    // Returns how much of the device's content is in this set but in none of the sets before it.
    HeldContent takeSet();

    bool isCovered() const;

    // Reports the records, registry keys, registry values and databases that no set holds. Returns their number. For
    // each database, names at most 20 records. If no set has a database with the same name, type and sort orders,
    // reports only the database itself, which counts as 1. Its records are then not named.
    std::uint64_t reportUncovered(Report& report) const;
    // Reports how many values in the device's records have a type that a set can't hold.
    void reportNotes(Report& report) const;

private:
    struct Database {
        CEOID oid = 0;
        std::u16string name;
        DWORD type = 0;
        std::vector<std::pair<CEPROPID, DWORD>> sortOrders;
        std::vector<archive::Digest> records;    // sorted
        std::vector<archive::Digest> uncovered;  // records that the device has more often than any set
        bool isHeld = false;                     // a set has a database of this name, type and sort orders
    };
    // A database that both the set and the device have under the same name.
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
    std::map<archive::RegistryPlace, std::string> registryOpen_;  // keys and values that no set holds yet
    std::uint64_t valuesNotKept_ = 0;                             // values of types that an image can't hold

    std::unique_ptr<archive::RecordCollector> database_;  // the database of the set that is read now
    std::u16string databaseName_;
    std::unique_ptr<archive::RegistryValues> registry_;
    std::vector<Held> held_;
};

}  // namespace quillbox_device

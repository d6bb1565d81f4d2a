#include "device_content.h"

#include "archive/record_content.h"
#include "database_handle.h"
#include "failure.h"
#include "screen_text/screen_text.h"
#include "stored_databases.h"

#include "registry/registry_content.h"
#include "text/case_folding.h"
#include "text/host_name.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>

namespace quillbox_device {

using namespace archive;
using screen_text::counted;
using screen_text::onScreen;

namespace {

constexpr std::size_t MostPrinted = 20;  // the most records that are listed for one database

void forEachRecord(CEOID database, const std::function<void(std::span<const CEPROPVAL>)>& use)
{
    const DatabaseHandle opened(database);
    ReadBlock block;
    WORD count = 0;
    while (CeReadRecordProps(opened.handle(), CEDB_ALLOWREALLOC, &count, nullptr, &block.bytes, &block.size) != 0)
        use({reinterpret_cast<const CEPROPVAL*>(block.bytes), count});
    if (GetLastError() != ERROR_NO_MORE_ITEMS)
        throw Failure("A record of the device can't be read.");
}

std::vector<Digest> both(const std::vector<Digest>& left, const std::vector<Digest>& right)
{
    std::vector<Digest> common;
    std::ranges::set_intersection(left, right, std::back_inserter(common));
    return common;
}

}  // namespace

void DeviceContent::readDevice()
{
    readDatabases();
    readRegistry();
}

void DeviceContent::readDatabases()
{
    for (const StoredDatabase& stored : storedDatabases()) {
        const database_formats::DatabaseHead head = headOf(stored.info);
        Database database{stored.oid, head.name, head.type, {}, {}, {}, false};
        for (const SORTORDERSPEC& order : head.sort)
            database.sortOrders.emplace_back(order.propid, order.dwFlags);
        RecordHasher hasher;
        forEachRecord(stored.oid, [&](std::span<const CEPROPVAL> record) {
            if (record.empty())
                return;  // a restore makes no record without properties
            database.records.push_back(hasher.hash(record));
            valuesNotKept_ += static_cast<std::uint64_t>(std::ranges::count_if(record, std::not_fn(setKeepsValue)));
        });
        std::ranges::sort(database.records);
        database.uncovered = database.records;
        databases_.push_back(std::move(database));
    }
}

void DeviceContent::readRegistry()
{
    std::string text;
    const bool written = platform::registry::writeContent([&](std::span<const std::byte> bytes) {
        text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return true;
    });
    std::size_t next = 0;
    const auto source = [&](std::span<std::byte> buffer) {
        const std::size_t bytes = std::min(buffer.size(), text.size() - next);
        std::memcpy(buffer.data(), text.data() + next, bytes);
        next += bytes;
        return bytes;
    };
    RegistryValues values;
    if (!written || platform::registry::readRegistryText(source, platform::registry::Wholeness::Required, values))
        throw Failure("The device's registry can't be read.");
    registryOpen_ = std::move(values.places);
}

void DeviceContent::beginSet()
{
    held_.clear();
    registry_.reset();
}

void DeviceContent::beginDatabase()
{
    database_ = std::make_unique<RecordCollector>(nullptr);
    databaseName_.clear();
}

void DeviceContent::head(const ImageReport& image)
{
    databaseName_ = image.name;
    database_->head(image);
}

void DeviceContent::endDatabase()
{
    Database* const own = named(databaseName_);
    if (!own)
        return;
    const bool sameHead = own->type == database_->type() && own->sortOrders == database_->sortOrders();
    std::ranges::sort(database_->digests);
    held_.push_back({own, sameHead, std::move(database_->digests)});
}

void DeviceContent::beginRegistry()
{
    registry_ = std::make_unique<RegistryValues>();
}

HeldContent DeviceContent::takeSet()
{
    HeldContent taken;
    for (Held& held : held_) {
        if (!held.sameHead)
            continue;
        Database& own = *held.database;
        own.isHeld = true;
        const std::size_t open = own.uncovered.size();
        own.uncovered = both(own.uncovered, moreIn(own.records, held.records));
        taken.records += open - own.uncovered.size();
    }
    if (registry_) {
        taken.places = std::erase_if(registryOpen_, [&](const auto& open) {
            const auto there = registry_->places.find(open.first);
            return there != registry_->places.end() && there->second == open.second;
        });
    }
    return taken;
}

bool DeviceContent::isCovered() const
{
    return registryOpen_.empty() && std::ranges::all_of(databases_, [](const Database& database) {
               return database.isHeld && database.uncovered.empty();
           });
}

// Names of databases are compared without case, as on the device.
DeviceContent::Database* DeviceContent::named(std::u16string_view name)
{
    const auto found = std::ranges::find_if(databases_, [&](const Database& database) {
        return platform::text::compareWithoutCase(database.name, name) == 0;
    });
    return found == databases_.end() ? nullptr : &*found;
}

// Returns the titles of the first records that no set contains, at most MostPrinted titles.
std::vector<std::string> DeviceContent::uncoveredTitles(const Database& database) const
{
    // If the device has several equal records and the sets hold some of them, only the rest is reported.
    std::vector<Digest> open = database.uncovered;
    RecordCollector collector([&](const Digest& digest, std::span<const CEPROPVAL>) {
        const auto found = std::ranges::lower_bound(open, digest);
        const bool isOpen = found != open.end() && *found == digest;
        if (isOpen)
            open.erase(found);
        return isOpen;
    });
    ImageReport head;
    head.type = database.type;
    head.records = static_cast<WORD>(std::min<std::size_t>(database.records.size(), CEDB_MAXRECORDS));
    collector.head(head);
    unsigned number = 0;
    forEachRecord(database.oid, [&](std::span<const CEPROPVAL> record) {
        if (collector.texts.size() < MostPrinted)
            collector.record(head.records - number, record);
        number++;
    });
    std::vector<std::string> titles;
    for (const RecordText& record : collector.texts)
        titles.push_back(record.title);
    return titles;
}

std::uint64_t DeviceContent::reportDatabase(const Database& database, Report& report) const
{
    const std::uint64_t open = database.isHeld ? database.uncovered.size() : database.records.size();
    const auto titles = database.isHeld ? uncoveredTitles(database) : std::vector<std::string>();
    std::string text = "not covered: database " + onScreen(database.name) + ": ";
    if (database.isHeld)
        text += std::to_string(open) + " of " + counted(database.records.size(), "record");
    else
        text += "no set has it with the same type and sort orders";
    for (const std::string& title : titles)
        text += "\n    " + onScreen(std::string_view(title));
    if (database.isHeld && open > MostPrinted)
        text += "\n    and " + std::to_string(open - MostPrinted) + " more";
    report.add("databases",
               {{"name", platform::text::toUtf8(database.name)},
                {"held", database.isHeld},
                {"recordCount", database.records.size()},
                {"uncoveredCount", open},
                {"records", titles}},
               text);
    return database.isHeld ? open : 1;
}

std::uint64_t DeviceContent::reportUncovered(Report& report) const
{
    std::uint64_t open = 0;
    for (const Database& database : databases_)
        if (!database.isHeld || !database.uncovered.empty())
            open += reportDatabase(database, report);
    for (const auto& [place, value] : registryOpen_) {
        nlohmann::ordered_json element = {
            {"key", platform::text::toUtf8(place.key)}, {"value", nullptr}, {"content", nullptr}};
        if (place.isValue)
            element.update({{"value", platform::text::toUtf8(place.name)}, {"content", value}});
        report.add("values", element,
                   "not covered: registry " + archive::onScreen(place) +
                       (place.isValue ? ": " + screen_text::onScreen(std::string_view(value)) : ""));
    }
    return open + registryOpen_.size();
}

void DeviceContent::reportNotes(Report& report) const
{
    report.set("unkeptValueCount", valuesNotKept_,
               valuesNotKept_ == 0
                   ? ""
                   : "No set keeps values of some types, such as numbers with a fraction. The device has " +
                         counted(valuesNotKept_, "such value") + ", which come back as 0.");
}

}  // namespace quillbox_device

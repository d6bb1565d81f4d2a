#include "known_records.h"

#include "database_handle.h"
#include "failure.h"

#include "database_formats/format_fault.h"
#include "database_formats/property_names.h"
#include "database_formats/value_text.h"

#include "ce/personal_databases.h"

#include <algorithm>
#include <vector>

namespace quillbox_device {

using database_formats::Controls;
using database_formats::FormatFault;
using database_formats::isZero;
using database_formats::valueText;

namespace {

bool isSame(const CEPROPVAL& left, const CEPROPVAL& right)
{
    return left.wFlags == right.wFlags && valueText(left, Controls::Kept) == valueText(right, Controls::Kept);
}

// Returns false if the property is bytes that aren't a text. vCard and iCalendar have no line for such bytes, and an
// address book in CSV has no column for them. So if such a file lacks these bytes, it doesn't follow that the user
// deleted them.
bool isText(const CEPROPVAL& property)
{
    if (LOWORD(property.propid) != CEVT_BLOB)
        return true;
    const auto& blob = property.val.blob;
    return database_formats::isValidUtf8({reinterpret_cast<const char*>(blob.lpb), blob.dwCount});
}

// Finds properties of a record by their ids. The constructor sorts the properties, because a record can have 65535 of
// them.
class ById {
public:
    explicit ById(std::span<const CEPROPVAL> record)
    {
        for (const CEPROPVAL& property : record)
            properties_.push_back(&property);
        std::ranges::stable_sort(properties_, {}, idOf);
    }
    // Returns null if there is none.
    const CEPROPVAL* find(CEPROPID id) const
    {
        const auto found = std::ranges::lower_bound(properties_, id, {}, idOf);
        return found != properties_.end() && idOf(*found) == id ? *found : nullptr;
    }

private:
    static CEPROPID idOf(const CEPROPVAL* property) { return property->propid; }

    std::vector<const CEPROPVAL*> properties_;
};

// Returns the properties to write to the record `old` so that it gets the content of `wanted`. Deletions come first,
// because they make room for what is added.
std::vector<CEPROPVAL> changesTo(std::span<const CEPROPVAL> old, std::span<const CEPROPVAL> wanted, DWORD type)
{
    const ById olds(old);
    const ById wanteds(wanted);
    std::vector<CEPROPVAL> changes;
    for (const CEPROPID id : database_formats::usualProperties(type))
        if (const CEPROPVAL* before = olds.find(id);
            before != nullptr && wanteds.find(id) == nullptr && !isZero(*before) && isText(*before))
            changes.push_back({id, 0, CEDB_PROPDELETE, {}});
    for (const CEPROPVAL& property : wanted) {
        const CEPROPVAL* before = olds.find(property.propid);
        const bool same = before != nullptr ? isSame(*before, property) : isZero(property);
        if (!same && property.propid != personal::Identifier)
            changes.push_back(property);
    }
    const CEPROPVAL* identifier = wanteds.find(personal::Identifier);
    if (!changes.empty() && identifier != nullptr && olds.find(personal::Identifier) == nullptr)
        changes.push_back(*identifier);
    return changes;
}

// Returns why a record couldn't be written. Both a full disk and a full database cause ERROR_DISK_FULL.
const char* whyNotWritten(HANDLE database)
{
    if (GetLastError() == ERROR_INVALID_PARAMETER)
        return "the record has more than 65535 properties or 16 MiB, which a device can't store";
    if (GetLastError() != ERROR_DISK_FULL)
        return "the record can't be stored";
    DWORD last = 0;
    return CeSeekDatabase(database, CEDB_SEEK_END, 1, &last) != 0 && last + 1 == CEDB_MAXRECORDS
               ? "the database already has 65535 records, and can't hold more"
               : "the disk has no room for another record";
}

// Writes the properties with several calls if necessary. A call takes at most 65535 properties, but a record can have
// more changes.
void write(HANDLE database, CEOID oid, std::span<const CEPROPVAL> properties)
{
    constexpr std::size_t MostAtOnce = 0xFFFF;
    std::vector<CEPROPVAL> copy(properties.begin(), properties.end());
    std::size_t at = 0;
    do {
        const auto count = static_cast<WORD>(std::min(copy.size() - at, MostAtOnce));
        oid = CeWriteRecordProps(database, oid, count, copy.data() + at);
        if (oid == 0)
            throw FormatFault(whyNotWritten(database));
        at += count;
    } while (at < copy.size());
}

}  // namespace

KnownRecords::KnownRecords(CEOID database)
{
    const DatabaseHandle opened(database);
    ReadBlock block;
    WORD count = 0;
    database_formats::Identifiers identifiers;
    database_formats::Identifiers contents;
    while (const CEOID oid =
               CeReadRecordProps(opened.handle(), CEDB_ALLOWREALLOC, &count, nullptr, &block.bytes, &block.size)) {
        const std::span record(reinterpret_cast<const CEPROPVAL*>(block.bytes), count);
        byIdentifier_[identifiers.of(record)].push_back(oid);
        byIdentifier_[contents.ofContent(record)].push_back(oid);
    }
    if (GetLastError() != ERROR_NO_MORE_ITEMS)
        throw Failure("A record of the device can't be read.");
}

Taken KnownRecords::store(HANDLE database, DWORD type, std::span<const CEPROPVAL> record)
{
    const auto known = byIdentifier_.empty() ? byIdentifier_.end() : byIdentifier_.find(incoming_.of(record));
    while (known != byIdentifier_.end() && !known->second.empty()) {
        const CEOID oid = known->second.front();
        known->second.pop_front();
        if (recognised_[oid])
            continue;
        recognised_[oid] = true;
        ReadBlock block;
        WORD count = 0;
        // The last argument, for the index of the record, is null. To find the index, the store would have to count all
        // records before this one.
        if (CeSeekDatabase(database, CEDB_SEEK_CEOID, oid, nullptr) == 0 ||
            CeReadRecordProps(database, CEDB_ALLOWREALLOC, &count, nullptr, &block.bytes, &block.size) == 0)
            throw FormatFault("a record of the device can't be read");
        const auto changes = changesTo({reinterpret_cast<const CEPROPVAL*>(block.bytes), count}, record, type);
        if (changes.empty())
            return Taken::Unchanged;
        write(database, oid, changes);
        return Taken::Changed;
    }
    write(database, 0, record);
    return Taken::Added;
}

}  // namespace quillbox_device

// A record as bytes.
#include "record_bytes.h"

#include <bit>
#include <cstring>
#include <string>
#include <unordered_map>

namespace platform::store {

namespace {

static_assert(std::endian::native == std::endian::little, "the integers are copied as they stand");
static_assert(sizeof(CEVALUNION) == 16, "the bytes that a value of an unknown type takes");

constexpr std::size_t IdBytes = sizeof(CEPROPID);
constexpr std::size_t HeadBytes = IdBytes + sizeof(WORD);
constexpr std::size_t SizeBytes = sizeof(DWORD);
constexpr std::size_t PropertyLimit = 0xFFFF;

// What a call is told or tells by them is true for that call alone: kept, they would say it again and again.
WORD withoutCallFlags(WORD flags)
{
    return static_cast<WORD>(flags & ~(CEDB_PROPNOTFOUND | CEDB_PROPDELETE));
}

WORD typeOf(CEPROPID id)
{
    return LOWORD(id);
}

bool hasSize(WORD type)
{
    return type == CEVT_LPWSTR || type == CEVT_BLOB;
}

// Bytes of a value whose type has no size of its own.
std::size_t fixedBytes(WORD type)
{
    switch (type) {
    case CEVT_I2:
    case CEVT_UI2:
        return sizeof(SHORT);
    case CEVT_I4:
    case CEVT_UI4:
    case CEVT_BOOL:
        return sizeof(LONG);
    case CEVT_R8:
    case CEVT_FILETIME:
        return sizeof(FILETIME);
    default:
        return sizeof(CEVALUNION);
    }
}

template <class Value>
Value valueAt(RecordView bytes, std::size_t offset)
{
    Value value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

// The property at the beginning of `bytes`; nothing if they don't hold all of it.
std::optional<PropertyView> propertyAt(RecordView bytes)
{
    if (bytes.size() < HeadBytes)
        return std::nullopt;
    PropertyView property{.id = valueAt<CEPROPID>(bytes, 0),
                          .flags = withoutCallFlags(valueAt<WORD>(bytes, IdBytes)),
                          .value = {},
                          .whole = {},
                          .missing = false};
    std::size_t start = HeadBytes;
    std::size_t size = fixedBytes(typeOf(property.id));
    if (hasSize(typeOf(property.id))) {
        start += SizeBytes;
        if (bytes.size() < start)
            return std::nullopt;
        size = valueAt<DWORD>(bytes, HeadBytes);
        size *= typeOf(property.id) == CEVT_LPWSTR ? sizeof(WCHAR) : 1;
    }
    if (bytes.size() - start < size)
        return std::nullopt;
    property.value = bytes.subspan(start, size);
    property.whole = bytes.first(start + size);
    return property;
}

template <class Value>
void append(RecordBytes& bytes, const Value& value)
{
    const auto* const start = reinterpret_cast<const std::byte*>(&value);
    bytes.insert(bytes.end(), start, start + sizeof value);
}

void appendSized(RecordBytes& bytes, DWORD count, const void* data, std::size_t size)
{
    append(bytes, count);
    const auto* const start = static_cast<const std::byte*>(data);
    bytes.insert(bytes.end(), start, start + size);
}

// False if a text or blob is null, or longer than its size can tell.
bool appendProperty(RecordBytes& bytes, const CEPROPVAL& property)
{
    append(bytes, property.propid);
    append(bytes, withoutCallFlags(property.wFlags));
    const WORD type = typeOf(property.propid);
    if (type == CEVT_LPWSTR) {
        if (property.val.lpwstr == nullptr)
            return false;
        const std::size_t characters = std::char_traits<WCHAR>::length(property.val.lpwstr);
        if (characters > 0xFFFFFFFF)
            return false;
        appendSized(bytes, static_cast<DWORD>(characters), property.val.lpwstr, characters * sizeof(WCHAR));
    } else if (type == CEVT_BLOB) {
        const CEBLOB& blob = property.val.blob;
        if (blob.dwCount > 0 && blob.lpb == nullptr)
            return false;
        appendSized(bytes, blob.dwCount, blob.lpb, blob.dwCount);
    } else {
        // All members begin where the union does.
        const auto* const start = reinterpret_cast<const std::byte*>(&property.val);
        bytes.insert(bytes.end(), start, start + fixedBytes(type));
    }
    return true;
}

std::size_t dataBytes(const PropertyView& property)
{
    if (property.missing)
        return 0;
    switch (typeOf(property.id)) {
    case CEVT_LPWSTR:
        return property.value.size() + sizeof(WCHAR);
    case CEVT_BLOB:
        return property.value.size() + property.value.size() % sizeof(WCHAR);  // the next text stays aligned
    default:
        return 0;
    }
}

void copyInto(void* target, RecordView bytes)
{
    if (!bytes.empty())
        std::memcpy(target, bytes.data(), bytes.size());
}

}  // namespace

std::optional<PropertyViews> propertiesOf(RecordView record)
{
    PropertyViews properties;
    properties.reserve(16);  // most records have fewer
    while (!record.empty()) {
        const auto property = propertyAt(record);
        if (!property || properties.size() == PropertyLimit)
            return std::nullopt;
        properties.push_back(*property);
        record = record.subspan(property->whole.size());
    }
    return properties;
}

std::optional<PropertyViews> pick(const PropertyViews& properties, std::span<const CEPROPID> ids)
{
    std::unordered_map<CEPROPID, const PropertyView*> byId;
    for (const PropertyView& property : properties)
        byId.emplace(property.id, &property);
    PropertyViews picked;
    bool any = false;
    for (const CEPROPID id : ids) {
        const auto found = byId.find(id);
        any = any || found != byId.end();
        picked.push_back(
            found != byId.end()
                ? *found->second
                : PropertyView{.id = id, .flags = CEDB_PROPNOTFOUND, .value = {}, .whole = {}, .missing = true});
    }
    return any ? std::optional(std::move(picked)) : std::nullopt;
}

std::optional<RecordBytes> withChanges(const PropertyViews& properties, std::span<const CEPROPVAL> changes)
{
    struct Slot {
        const PropertyView* old = nullptr;
        const CEPROPVAL* changed = nullptr;
    };
    std::vector<Slot> slots;
    std::unordered_map<CEPROPID, std::size_t> places;
    for (const PropertyView& property : properties) {
        places.emplace(property.id, slots.size());
        slots.push_back({&property, nullptr});
    }
    for (const CEPROPVAL& change : changes) {
        const auto [place, added] = places.emplace(change.propid, slots.size());
        if (added)
            slots.push_back({nullptr, &change});
        else
            slots[place->second].changed = &change;
    }

    RecordBytes record;
    std::size_t count = 0;
    for (const Slot& slot : slots) {
        if (slot.changed != nullptr && (slot.changed->wFlags & CEDB_PROPDELETE) != 0)
            continue;
        if (slot.changed == nullptr)
            record.insert(record.end(), slot.old->whole.begin(), slot.old->whole.end());
        else if (!appendProperty(record, *slot.changed))
            return std::nullopt;
        ++count;
    }
    return count <= PropertyLimit ? std::optional(std::move(record)) : std::nullopt;
}

std::size_t blockBytes(const PropertyViews& properties)
{
    std::size_t bytes = properties.size() * sizeof(CEPROPVAL);
    for (const PropertyView& property : properties)
        bytes += dataBytes(property);
    return bytes;
}

void fillBlock(const PropertyViews& properties, BYTE* block)
{
    BYTE* data = block + properties.size() * sizeof(CEPROPVAL);
    for (const PropertyView& property : properties) {
        CEPROPVAL value;
        std::memset(&value, 0, sizeof value);
        value.propid = property.id;
        value.wFlags = property.flags;
        if (!property.missing && typeOf(property.id) == CEVT_LPWSTR) {
            value.val.lpwstr = reinterpret_cast<WCHAR*>(data);
            copyInto(data, property.value);
            std::memset(data + property.value.size(), 0, sizeof(WCHAR));
        } else if (!property.missing && typeOf(property.id) == CEVT_BLOB) {
            value.val.blob = {static_cast<DWORD>(property.value.size()), data};
            copyInto(data, property.value);
        } else {
            copyInto(&value.val, property.value);
        }
        // The caller's block may stand anywhere.
        std::memcpy(block, &value, sizeof value);
        block += sizeof value;
        data += dataBytes(property);
    }
}

}  // namespace platform::store

#include "record_bytes.h"

#include <bit>
#include <cstring>
#include <string>
#include <unordered_map>

namespace platform::store {

namespace {

static_assert(std::endian::native == std::endian::little, "integers are copied without conversion");
static_assert(sizeof(CEVALUNION) == 16, "a stored value of an unknown type has 16 bytes");

constexpr std::size_t IdBytes = sizeof(CEPROPID);
constexpr std::size_t HeadBytes = IdBytes + sizeof(WORD);
constexpr std::size_t SizeBytes = sizeof(DWORD);
constexpr std::size_t PropertyLimit = 0xFFFF;

// CEDB_PROPNOTFOUND and CEDB_PROPDELETE are valid for a single call. If they were stored, every later read would return
// them.
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

// Returns the size of a value that is neither a text nor a blob.
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

// Returns the property at the beginning of `bytes`. Returns nothing if the property is longer than `bytes`.
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

void append(RecordBytes& bytes, RecordView piece)
{
    bytes.insert(bytes.end(), piece.begin(), piece.end());
}

// Returns a view of the caller's value. Returns nothing if the pointer to a text is null, or if the pointer to a blob
// is null although the blob's size isn't 0.
std::optional<RecordView> valueOf(const CEPROPVAL& property)
{
    const WORD type = typeOf(property.propid);
    if (type == CEVT_LPWSTR) {
        const WCHAR* const text = property.val.lpwstr;
        return text == nullptr ? std::nullopt
                               : std::optional(std::as_bytes(std::span(text, std::char_traits<WCHAR>::length(text))));
    }
    if (type == CEVT_BLOB) {
        const CEBLOB& blob = property.val.blob;
        return blob.dwCount > 0 && blob.lpb == nullptr
                   ? std::nullopt
                   : std::optional(std::as_bytes(std::span(blob.lpb, blob.dwCount)));
    }
    // All members of the union have offset 0, so the value is at its beginning.
    return std::as_bytes(std::span(&property.val, 1)).first(fixedBytes(type));
}

void appendProperty(RecordBytes& bytes, const CEPROPVAL& property, RecordView value)
{
    const WORD type = typeOf(property.propid);
    append(bytes, property.propid);
    append(bytes, withoutCallFlags(property.wFlags));
    if (hasSize(type))
        append(bytes, static_cast<DWORD>(type == CEVT_LPWSTR ? value.size() / sizeof(WCHAR) : value.size()));
    append(bytes, value);
}

std::size_t dataBytes(const PropertyView& property)
{
    if (property.missing)
        return 0;
    switch (typeOf(property.id)) {
    case CEVT_LPWSTR:
        return property.value.size() + sizeof(WCHAR);
    case CEVT_BLOB:
        return property.value.size() + property.value.size() % sizeof(WCHAR);  // keeps the next text aligned
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
    std::size_t content = 0;
    while (!record.empty()) {
        const auto property = propertyAt(record);
        if (!property || properties.size() == PropertyLimit)
            return std::nullopt;
        content += hasSize(typeOf(property->id)) ? property->value.size() : 0;
        if (content > MaxRecordContent)
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
        RecordView value = {};
    };
    std::vector<Slot> slots;
    std::unordered_map<CEPROPID, std::size_t> slotOfId;
    for (const PropertyView& property : properties) {
        slotOfId.emplace(property.id, slots.size());
        slots.push_back({&property});
    }
    for (const CEPROPVAL& change : changes) {
        const auto [slot, added] = slotOfId.emplace(change.propid, slots.size());
        if (added)
            slots.push_back({nullptr, &change});
        else
            slots[slot->second].changed = &change;
    }

    std::erase_if(slots, [](const Slot& slot) {
        return slot.changed != nullptr && (slot.changed->wFlags & CEDB_PROPDELETE) != 0;
    });

    std::size_t bytes = 0;
    std::size_t content = 0;
    for (Slot& slot : slots) {
        const auto value = slot.changed != nullptr ? valueOf(*slot.changed) : slot.old->value;
        if (!value)
            return std::nullopt;
        slot.value = *value;
        bytes += HeadBytes + SizeBytes + value->size();
        const CEPROPID id = slot.changed != nullptr ? slot.changed->propid : slot.old->id;
        content += hasSize(typeOf(id)) ? value->size() : 0;
    }
    if (slots.size() > PropertyLimit || content > MaxRecordContent)
        return std::nullopt;

    RecordBytes record;
    record.reserve(bytes);  // avoids copies of a large record while it grows
    for (const Slot& slot : slots) {
        if (slot.changed == nullptr)
            append(record, slot.old->whole);
        else
            appendProperty(record, *slot.changed, slot.value);
    }
    return record;
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
        // The caller's block may have any alignment.
        std::memcpy(block, &value, sizeof value);
        block += sizeof value;
        data += dataBytes(property);
    }
}

}  // namespace platform::store

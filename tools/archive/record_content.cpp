#include "archive/record_content.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace archive {

namespace {

template <class Value>
void append(std::vector<std::byte>& bytes, const Value& value)
{
    const auto piece = std::as_bytes(std::span(&value, 1));
    bytes.insert(bytes.end(), piece.begin(), piece.end());
}

template <class Unit>
void appendSized(std::vector<std::byte>& bytes, std::span<const Unit> content)
{
    append(bytes, content.size());
    const auto piece = std::as_bytes(content);
    bytes.insert(bytes.end(), piece.begin(), piece.end());
}

void appendValue(std::vector<std::byte>& bytes, const CEPROPVAL& property)
{
    switch (LOWORD(property.propid)) {
    case CEVT_I2:
    case CEVT_UI2:
        return append(bytes, property.val.iVal);
    case CEVT_I4:
    case CEVT_UI4:
        return append(bytes, property.val.lVal);
    case CEVT_FILETIME:
        return append(bytes, property.val.filetime);
    case CEVT_LPWSTR:
        return appendSized(bytes, std::span<const char16_t>(std::u16string_view(property.val.lpwstr)));
    case CEVT_BLOB:
        return appendSized(bytes, std::span<const BYTE>(property.val.blob.lpb, property.val.blob.dwCount));
    default:
        return;
    }
}

}  // namespace

std::vector<CEPROPVAL> restoredRecord(std::span<const CEPROPVAL> record)
{
    std::vector<CEPROPVAL> kept;
    std::unordered_map<CEPROPID, std::size_t> positions;  // in `kept`
    for (const CEPROPVAL& property : record) {
        const auto [position, isNew] = positions.emplace(property.propid, kept.size());
        if (isNew)
            kept.push_back(property);
        else
            kept[position->second] = property;
    }
    std::erase_if(kept, [](const CEPROPVAL& property) { return (property.wFlags & CEDB_PROPDELETE) != 0; });
    for (CEPROPVAL& property : kept)
        property.wFlags = static_cast<WORD>(property.wFlags & ~CEDB_PROPNOTFOUND);
    return kept;
}

Digest RecordHasher::hash(std::span<const CEPROPVAL> record)
{
    ordered_.assign(record.begin(), record.end());
    std::ranges::sort(ordered_, {}, &CEPROPVAL::propid);
    bytes_.clear();
    for (const CEPROPVAL& property : ordered_) {
        append(bytes_, property.propid);
        append(bytes_, property.wFlags);
        appendValue(bytes_, property);
    }
    hash_.add(bytes_);
    return hash_.finish();
}

bool setKeepsValue(const CEPROPVAL& property)
{
    switch (LOWORD(property.propid)) {
    case CEVT_I2:
    case CEVT_UI2:
    case CEVT_I4:
    case CEVT_UI4:
    case CEVT_FILETIME:
    case CEVT_LPWSTR:
    case CEVT_BLOB:
        return true;
    default:
        return false;
    }
}

}  // namespace archive

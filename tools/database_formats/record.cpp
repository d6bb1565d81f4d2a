#include "database_formats/record.h"

#include "database_formats/format_fault.h"

#include <algorithm>
#include <utility>

namespace database_formats {

void Record::add(CEPROPID id, WORD flags, const CEVALUNION& value)
{
    if ((flags & (CEDB_PROPDELETE | CEDB_PROPNOTFOUND)) != 0)
        throw FormatFault("\"flags\" of a stored property can't be 256 or 512");
    if (properties_.size() == 0xFFFF)
        throw FormatFault("a record has more than 65535 properties");
    properties_.push_back({id, 0, flags, value});
}

void Record::addText(CEPROPID id, WORD flags, std::u16string text)
{
    if (text.find(u'\0') != std::u16string::npos)
        throw FormatFault("a text has a NUL in it");
    add(id, flags, {.lpwstr = texts_.emplace_back(std::move(text)).data()});
}

void Record::addBlob(CEPROPID id, WORD flags, std::string bytes)
{
    if (bytes.size() > 0xFFFFFFFF)
        throw FormatFault("a blob has more than 4 GiB");
    std::string& kept = blobs_.emplace_back(std::move(bytes));
    add(id, flags, {.blob = {static_cast<DWORD>(kept.size()), reinterpret_cast<BYTE*>(kept.data())}});
}

void Record::addCopy(const CEPROPVAL& property)
{
    switch (LOWORD(property.propid)) {
    case CEVT_LPWSTR:
        return addText(property.propid, property.wFlags, property.val.lpwstr);
    case CEVT_BLOB: {
        const CEBLOB& blob = property.val.blob;
        std::string bytes(blob.dwCount, 0);
        std::copy_n(blob.lpb, blob.dwCount, bytes.begin());
        return addBlob(property.propid, property.wFlags, std::move(bytes));
    }
    default:
        add(property.propid, property.wFlags, property.val);
    }
}

}  // namespace database_formats

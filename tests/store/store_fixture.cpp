#include "store_fixture.h"

namespace {

CEPROPVAL toValue(const Property& property)
{
    CEPROPVAL value = {};
    value.propid = property.id;
    value.wFlags = property.flags;
    if (LOWORD(property.id) == CEVT_LPWSTR)
        value.val.lpwstr = reinterpret_cast<WCHAR*>(const_cast<char*>(property.value.data()));
    else if (LOWORD(property.id) == CEVT_BLOB)
        value.val.blob = {static_cast<DWORD>(property.value.size()),
                          reinterpret_cast<BYTE*>(const_cast<char*>(property.value.data()))};
    else
        std::memcpy(&value.val, property.value.data(), property.value.size());
    return value;
}

Property fromValue(const CEPROPVAL& value)
{
    const auto& [bytes, content] = value.val.blob;
    switch (LOWORD(value.propid)) {
    case CEVT_LPWSTR:
        return text(HIWORD(value.propid), value.val.lpwstr, value.wFlags);
    case CEVT_BLOB:
        return blob(HIWORD(value.propid), {reinterpret_cast<const char*>(content), bytes}, value.wFlags);
    default:
        return {value.propid, {reinterpret_cast<const char*>(&value.val), sizeof value.val}, value.wFlags};
    }
}

}  // namespace

void PrintTo(const Property& property, std::ostream* out)
{
    *out << std::hex << property.id << " (" << property.value.size() << " bytes, flags " << property.flags << ")";
}

// With the NUL: `value` of the property is used as a text in place.
Property text(WORD id, const std::u16string& value, WORD flags)
{
    return {propertyId(id, CEVT_LPWSTR),
            std::string(reinterpret_cast<const char*>(value.c_str()), (value.size() + 1) * sizeof(WCHAR)), flags};
}

Property blob(WORD id, const std::string& value, WORD flags)
{
    return {propertyId(id, CEVT_BLOB), value, flags};
}

HANDLE opened(const std::u16string& name, DWORD flags)
{
    CEOID oid = 0;
    const HANDLE database = CeOpenDatabase(&oid, name.c_str(), 0, flags, nullptr);
    EXPECT_NE(database, INVALID_HANDLE_VALUE) << GetLastError();
    return database;
}

OpenDatabase::OpenDatabase(const std::u16string& name, DWORD flags) : handle_(opened(name, flags)) {}

OpenDatabase::~OpenDatabase()
{
    EXPECT_TRUE(CloseHandle(handle_)) << GetLastError();
}

StoreTest::StoreTest() : HostFolder(memoryFolder())
{
    open();
}

StoreTest::~StoreTest()
{
    close();
}

CEOID StoreTest::write(HANDLE database, CEOID oid, const Record& record)
{
    std::vector<CEPROPVAL> values;
    for (const Property& property : record)
        values.push_back(toValue(property));
    return CeWriteRecordProps(database, oid, static_cast<WORD>(values.size()), values.data());
}

Record StoreTest::read(HANDLE database, CEOID* oid)
{
    WORD count = 0;
    BYTE* buffer = nullptr;
    DWORD bytes = 0;
    const CEOID found = CeReadRecordProps(database, CEDB_ALLOWREALLOC, &count, nullptr, &buffer, &bytes);
    if (oid)
        *oid = found;
    Record record;
    for (WORD i = 0; found != 0 && i < count; ++i)
        record.push_back(fromValue(reinterpret_cast<const CEPROPVAL*>(buffer)[i]));
    LocalFree(buffer);
    return record;
}

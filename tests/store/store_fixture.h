// store_fixture.h - an object store in a temporary folder, and records that can be compared.
#pragma once

#include "database/device_database.h"
#include "host_folder.h"
#include "store/object_store.h"

#include "ce/store.h"

#include <cstring>
#include <vector>

// A property with its value as bytes: the content of a text or blob, or the bits of the union for any other type.
struct Property {
    CEPROPID id = 0;
    std::string value;
    WORD flags = 0;
    bool operator==(const Property&) const = default;
};

inline void PrintTo(const Property& property, std::ostream* out)
{
    *out << std::hex << property.id << " (" << property.value.size() << " bytes, flags " << property.flags << ")";
}

using Record = std::vector<Property>;
using Records = std::vector<Record>;

constexpr CEPROPID propertyId(WORD number, WORD type)
{
    return (CEPROPID{number} << 16) | type;
}

template <class Value>
Property number(WORD id, WORD type, Value value, WORD flags = 0)
{
    std::string bits(sizeof(CEVALUNION), '\0');
    std::memcpy(bits.data(), &value, sizeof value);
    return {propertyId(id, type), bits, flags};
}

// The value includes the NUL, because toValue() passes a pointer to it as a text.
inline Property text(WORD id, const std::u16string& value, WORD flags = 0)
{
    return {propertyId(id, CEVT_LPWSTR),
            std::string(reinterpret_cast<const char*>(value.c_str()), (value.size() + 1) * sizeof(WCHAR)), flags};
}

inline Property blob(WORD id, const std::string& value, WORD flags = 0)
{
    return {propertyId(id, CEVT_BLOB), value, flags};
}

inline CEPROPVAL toValue(const Property& property)
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

inline Property fromValue(const CEPROPVAL& value)
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

// Opens a database. The test fails if there is no such database.
inline HANDLE opened(const std::u16string& name, DWORD flags = 0)
{
    CEOID oid = 0;
    const HANDLE database = CeOpenDatabase(&oid, name.c_str(), 0, flags, nullptr);
    EXPECT_NE(database, INVALID_HANDLE_VALUE) << GetLastError();
    return database;
}

// An open database. The destructor closes it, and the test fails if that fails.
class OpenDatabase {
public:
    explicit OpenDatabase(const std::u16string& name, DWORD flags = 0) : handle_(opened(name, flags)) {}
    OpenDatabase(const OpenDatabase&) = delete;
    OpenDatabase& operator=(const OpenDatabase&) = delete;
    ~OpenDatabase() { EXPECT_TRUE(CloseHandle(handle_)) << GetLastError(); }

    operator HANDLE() const { return handle_; }

private:
    HANDLE handle_;
};

class StoreTest : public HostFolder {
protected:
    StoreTest() : HostFolder(memoryFolder()) { open(); }
    ~StoreTest() override { close(); }

    void open() const
    {
        std::string error;
        ASSERT_TRUE(platform::database::openDeviceDatabase(at("device.db"), error)) << error;
    }
    static void close()
    {
        platform::store::closeStore();
        platform::database::closeDeviceDatabase();
    }

    // Returns 0 if the call succeeded, or the last error.
    static DWORD errorOf(bool succeeded) { return succeeded ? 0 : GetLastError(); }
    // Creates a database and adds the records. Returns 0 if the database was refused.
    static CEOID create(const std::u16string& name, DWORD type = 0, const Records& records = {})
    {
        const CEOID oid = CeCreateDatabase(name.c_str(), type, 0, nullptr);
        if (records.empty())
            return oid;
        const OpenDatabase database(name);
        for (const Record& record : records)
            EXPECT_NE(add(database, record), 0U) << GetLastError();
        return oid;
    }
    static bool remove(const std::u16string& name) { return CeDeleteDatabase(oidOf(name)) != 0; }
    // Returns 0 if there is no such database.
    static CEOID oidOf(const std::u16string& name)
    {
        CEOID oid = 0;
        const HANDLE database = CeOpenDatabase(&oid, name.c_str(), 0, 0, nullptr);
        return database != INVALID_HANDLE_VALUE && CloseHandle(database) ? oid : 0;
    }
    static bool exists(const std::u16string& name) { return oidOf(name) != 0; }
    // Returns 0 if the record was refused.
    static CEOID add(HANDLE database, const Record& record) { return write(database, 0, record); }
    static CEOID write(HANDLE database, CEOID oid, const Record& record)
    {
        std::vector<CEPROPVAL> values;
        for (const Property& property : record)
            values.push_back(toValue(property));
        return CeWriteRecordProps(database, oid, static_cast<WORD>(values.size()), values.data());
    }
    // Returns the record at the pointer, or an empty record on failure.
    static Record read(HANDLE database, CEOID* oid = nullptr)
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
    // Returns all records from the first to the last.
    static Records recordsOf(const std::u16string& name)
    {
        const OpenDatabase database(name, CEDB_AUTOINCREMENT);
        Records records;
        CEOID oid = 0;
        for (Record record = read(database, &oid); oid != 0; record = read(database, &oid))
            records.push_back(record);
        EXPECT_EQ(GetLastError(), ERROR_NO_MORE_ITEMS);
        return records;
    }
    static CEDBASEINFO infoOf(const std::u16string& name)
    {
        CEOIDINFO info = {};
        EXPECT_TRUE(CeOidGetInfo(oidOf(name), &info)) << GetLastError();
        EXPECT_EQ(info.wObjType, OBJTYPE_DATABASE);
        return info.infDatabase;
    }
};

// store_fixture.h - an object store in a temporary folder, and records that can be compared.
#pragma once

#include "database/device_database.h"
#include "host_folder.h"
#include "store/object_store.h"

#include "ce/store.h"

#include <cstring>
#include <vector>

// A property with its value as bytes: of a text or blob its content, otherwise the bits of the union.
struct Property {
    CEPROPID id = 0;
    std::string value;
    WORD flags = 0;
    bool operator==(const Property&) const = default;
};
void PrintTo(const Property& property, std::ostream* out);

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
Property text(WORD id, const std::u16string& value, WORD flags = 0);
Property blob(WORD id, const std::string& value, WORD flags = 0);

// The test fails if there is no such database.
HANDLE opened(const std::u16string& name, DWORD flags = 0);

// An open database. The end of the scope closes it, and the test fails if the close fails.
class OpenDatabase {
public:
    explicit OpenDatabase(const std::u16string& name, DWORD flags = 0);
    OpenDatabase(const OpenDatabase&) = delete;
    OpenDatabase& operator=(const OpenDatabase&) = delete;
    ~OpenDatabase();

    operator HANDLE() const { return handle_; }

private:
    HANDLE handle_;
};

class StoreTest : public HostFolder {
protected:
    StoreTest();
    ~StoreTest() override;

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

    // 0 if the call succeeded, else the last error.
    static DWORD errorOf(bool succeeded) { return succeeded ? 0 : GetLastError(); }
    // 0 when it was refused. With records, the database is closed again.
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
    // 0 if there is no such database.
    static CEOID oidOf(const std::u16string& name)
    {
        CEOID oid = 0;
        const HANDLE database = CeOpenDatabase(&oid, name.c_str(), 0, 0, nullptr);
        return database != INVALID_HANDLE_VALUE && CloseHandle(database) ? oid : 0;
    }
    static bool exists(const std::u16string& name) { return oidOf(name) != 0; }
    // 0 when it was refused.
    static CEOID add(HANDLE database, const Record& record) { return write(database, 0, record); }
    static CEOID write(HANDLE database, CEOID oid, const Record& record);
    // The record at the pointer; none on failure.
    static Record read(HANDLE database, CEOID* oid = nullptr);
    // From the first record to the last.
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

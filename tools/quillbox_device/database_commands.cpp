// database_commands.cpp - databases as JSON lines, and back.
//
// A line {"database": NAME, "type": N, "sort": [{"property": N, "flags": N}...]} begins a database; each line
// {"record": [PROPERTY...]} behind it is one record, in the database's own order.

#include "commands.h"
#include "existing_device.h"
#include "failure.h"
#include "host_files.h"
#include "property_json.h"
#include "stored_databases.h"

#include "host_name.h"

#include "ce/memory.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

namespace quillbox_device {

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

// An open database; closed when it goes.
class OpenDatabase {
public:
    explicit OpenDatabase(CEOID oid) : handle_(CeOpenDatabase(&oid, nullptr, 0, CEDB_AUTOINCREMENT, nullptr))
    {
        if (handle_ == INVALID_HANDLE_VALUE)
            throw Failure("A database can't be opened.");
    }
    OpenDatabase(const OpenDatabase&) = delete;
    OpenDatabase& operator=(const OpenDatabase&) = delete;
    ~OpenDatabase() { (void)close(); }

    [[nodiscard]] HANDLE handle() const { return handle_; }
    // False if what was written isn't in the store.
    [[nodiscard]] bool close() { return CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) != 0; }

private:
    HANDLE handle_;
};

// The block that records are read into.
struct ReadBlock {
    ReadBlock() = default;
    ReadBlock(const ReadBlock&) = delete;
    ReadBlock& operator=(const ReadBlock&) = delete;
    ~ReadBlock() { LocalFree(bytes); }

    BYTE* bytes = nullptr;
    DWORD size = 0;
};

Json headOf(const CEDBASEINFO& info)
{
    Json head{{"database", platform::text::toUtf8(info.szDbaseName)}, {"type", info.dwDbaseType}};
    Json& sort = head["sort"] = Json::array();
    for (const SORTORDERSPEC& order : std::span(info.rgSortSpecs, std::min(info.wNumSortOrder, CEDB_MAXSORTORDER)))
        sort.push_back({{"property", order.propid}, {"flags", order.dwFlags}});
    return head;
}

void exportOne(const StoredDatabase& database, std::ostream& out)
{
    out << headOf(database.info).dump() << '\n';
    const OpenDatabase opened(database.oid);
    ReadBlock block;
    WORD count = 0;
    while (CeReadRecordProps(opened.handle(), CEDB_ALLOWREALLOC, &count, nullptr, &block.bytes, &block.size) != 0) {
        Json record{{"record", Json::array()}};
        for (const CEPROPVAL& property : std::span(reinterpret_cast<const CEPROPVAL*>(block.bytes), count))
            record["record"].push_back(toJson(property));
        out << record.dump() << '\n';
    }
    if (GetLastError() != ERROR_NO_MORE_ITEMS)
        throw Failure("A record of \"" + platform::text::toUtf8(database.info.szDbaseName) + "\" can't be read.");
}

std::optional<StoredDatabase> found(const std::u16string& name)
{
    CEOID oid = 0;
    const HANDLE opened = CeOpenDatabase(&oid, name.c_str(), 0, 0, nullptr);
    CEOIDINFO info{};
    if (opened == INVALID_HANDLE_VALUE)
        return std::nullopt;
    CloseHandle(opened);
    if (!CeOidGetInfo(oid, &info))
        return std::nullopt;
    return StoredDatabase{oid, info.infDatabase};
}

DWORD numberIn(const Json& object, const char* field)
{
    if (!object.is_object() || !object.contains(field) || !object[field].is_number_unsigned() ||
        object[field].get<std::uint64_t>() > 0xFFFFFFFF)
        throw Failure(std::string("\"") + field + "\" isn't a number of 32 bits");
    return object[field].get<DWORD>();
}

// Takes line after line of a file into the open store.
class Importer {
public:
    explicit Importer(bool replace) : replace_(replace) {}

    void take(const std::string& line)
    {
        const Json json = Json::parse(line);
        if (json.is_object() && json.contains("database"))
            begin(json);
        else if (json.is_object() && json.contains("record") && json["record"].is_array())
            addRecord(json["record"]);
        else
            throw Failure("this is neither a database nor a record");
    }
    void finish()
    {
        if (open_ && !open_->close())
            throw Failure("the records can't be stored");
        open_.reset();
    }

private:
    void begin(const Json& head)
    {
        finish();
        if (!head["database"].is_string() || !head.contains("sort") || !head["sort"].is_array())
            throw Failure("a database lacks its name or its \"sort\"");
        const auto& utf8 = head["database"].get_ref<const std::string&>();
        const std::u16string name = platform::text::fromUtf8(utf8);
        if (name.size() >= CEDB_MAXDBASENAMELEN || name.find(u'\0') != std::u16string::npos)
            throw Failure("a database's name has more than 31 characters, or a NUL");
        const DWORD type = numberIn(head, "type");
        std::vector<SORTORDERSPEC> orders;
        for (const Json& order : head["sort"])
            orders.push_back({numberIn(order, "property"), numberIn(order, "flags")});
        if (orders.size() > CEDB_MAXSORTORDER)
            throw Failure("a database has more than four sort orders");
        if (const auto old = found(name)) {
            if (!replace_)
                throw Failure("the database \"" + utf8 + "\" exists; --replace replaces it");
            if (!CeDeleteDatabase(old->oid))
                throw Failure("the database \"" + utf8 + "\" can't be deleted");
        }
        const CEOID oid = CeCreateDatabase(name.c_str(), type, static_cast<WORD>(orders.size()), orders.data());
        if (oid == 0)
            throw Failure("the database \"" + utf8 + "\" can't be made");
        open_ = std::make_unique<OpenDatabase>(oid);
    }
    void addRecord(const Json& properties)
    {
        if (!open_)
            throw Failure("there is no database before the record");
        if (properties.empty() || properties.size() > 0xFFFF)
            throw Failure("a record has no properties, or too many");
        RecordInput record;
        for (const Json& property : properties)
            record.add(property);
        if (CeWriteRecordProps(open_->handle(), 0, static_cast<WORD>(properties.size()), record.properties().data()) ==
            0)
            throw Failure("the record can't be stored");
    }

    bool replace_;
    std::unique_ptr<OpenDatabase> open_;
};

void importLines(std::istream& in, const std::string& file, bool replace)
{
    Importer importer(replace);
    std::size_t number = 0;
    const auto fail = [&](const std::string& what) {
        throw Failure("\"" + file + "\", line " + std::to_string(number) + ": " + what + ". Nothing was imported.");
    };
    try {
        for (std::string line; std::getline(in, line);) {
            ++number;
            if (!line.empty())
                importer.take(line);
        }
        importer.finish();
    } catch (const Failure& failure) {
        fail(failure.what());
    } catch (const nlohmann::json::exception&) {
        fail("this is no JSON");
    }
    if (in.bad())
        fail("the file can't be read further");
}

}  // namespace

void listDatabases(const fs::path& device)
{
    const auto opened = openExisting(device);
    for (const StoredDatabase& database : storedDatabases())
        print(database);
}

void exportDatabases(const fs::path& device, const std::optional<std::string>& name, const std::string& file,
                     bool force)
{
    const auto opened = openExisting(device);
    std::vector<StoredDatabase> wanted;
    if (name) {
        const auto database = found(platform::text::fromUtf8(*name));
        if (!database)
            throw Failure("The device has no database \"" + *name + "\".");
        wanted.push_back(*database);
    } else {
        wanted = storedDatabases();
    }
    Output output(file, force);
    for (const StoredDatabase& database : wanted)
        exportOne(database, output.stream());
    output.finish();
}

void importDatabases(const fs::path& device, const std::string& file, bool replace)
{
    Input input(file);
    const auto opened = openExisting(device);
    changeAsAWhole(*opened, [&] { importLines(input.stream(), file, replace); });
}

}  // namespace quillbox_device

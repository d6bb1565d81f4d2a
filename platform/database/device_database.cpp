// The schema of the device's database, and the functions that open and close the database.
#include "database/device_database.h"

#include "host/files.h"
#include "text/host_name.h"

#include <sqlite3.h>

#include <iterator>
#include <memory>
#include <optional>
#include <system_error>

namespace platform::database {

namespace {

// "QBDV" in SQLite's header identifies a device's database.
constexpr std::int64_t applicationId = 0x51424456;

// Element n, counted from 1, migrates the schema from version n - 1 to version n. Devices of every version exist, so
// elements are only appended.
const char* const migrations[] = {
    // Version 1 has the tables of the registry, and of the host folders that the device remembers. `folded` is the
    // case-folded name. Searches compare this name. The four predefined keys have the ids 1 to 4 and no parent.
    R"sql(
CREATE TABLE registry_key (
    id INTEGER PRIMARY KEY,
    parent INTEGER REFERENCES registry_key (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    folded TEXT NOT NULL,
    UNIQUE (parent, folded)
) STRICT;
CREATE TABLE registry_value (
    key INTEGER NOT NULL REFERENCES registry_key (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    folded TEXT NOT NULL,
    type INTEGER NOT NULL,
    data BLOB NOT NULL,
    PRIMARY KEY (key, folded)
) STRICT;
INSERT INTO registry_key (id, parent, name, folded) VALUES
    (1, NULL, 'HKEY_CLASSES_ROOT', 'hkey_classes_root'),
    (2, NULL, 'HKEY_CURRENT_USER', 'hkey_current_user'),
    (3, NULL, 'HKEY_LOCAL_MACHINE', 'hkey_local_machine'),
    (4, NULL, 'HKEY_USERS', 'hkey_users');
CREATE TABLE remembered_folder (
    name TEXT NOT NULL PRIMARY KEY,
    folder BLOB NOT NULL,
    card INTEGER NOT NULL CHECK (card IN (0, 1)),
    capacity INTEGER
) STRICT;
)sql",
    // Version 2 adds the tables of the object store's databases. Object identifiers (oids) below 0x1000000 are those of
    // databases, and the others are those of records. No oid is used twice. `properties` has the format of
    // store/record_bytes.h. The triggers keep `records` and `bytes` of each database correct, even if a part of a
    // transaction is rolled back.
    R"sql(
CREATE TABLE store_database (
    oid INTEGER PRIMARY KEY AUTOINCREMENT CHECK (oid < 0x1000000),
    name TEXT NOT NULL,
    folded TEXT NOT NULL UNIQUE,
    type INTEGER NOT NULL,
    records INTEGER NOT NULL DEFAULT 0 CHECK (records BETWEEN 0 AND 65535),
    bytes INTEGER NOT NULL DEFAULT 0,
    modified INTEGER NOT NULL
) STRICT;
CREATE TABLE store_sort_order (
    database INTEGER NOT NULL REFERENCES store_database (oid) ON DELETE CASCADE,
    place INTEGER NOT NULL,
    property INTEGER NOT NULL,
    flags INTEGER NOT NULL,
    PRIMARY KEY (database, place)
) STRICT;
CREATE TABLE store_record (
    oid INTEGER PRIMARY KEY AUTOINCREMENT CHECK (oid BETWEEN 0x1000000 AND 0xFFFFFFFF),
    database INTEGER NOT NULL REFERENCES store_database (oid) ON DELETE CASCADE,
    properties BLOB NOT NULL
) STRICT;
CREATE INDEX store_record_database ON store_record (database);
INSERT INTO sqlite_sequence (name, seq) VALUES ('store_record', 0xFFFFFF);
CREATE TRIGGER store_record_added AFTER INSERT ON store_record BEGIN
    UPDATE store_database SET records = records + 1, bytes = bytes + length(NEW.properties) WHERE oid = NEW.database;
END;
CREATE TRIGGER store_record_changed AFTER UPDATE OF properties ON store_record BEGIN
    UPDATE store_database SET bytes = bytes + length(NEW.properties) - length(OLD.properties) WHERE oid = NEW.database;
END;
CREATE TRIGGER store_record_removed AFTER DELETE ON store_record BEGIN
    UPDATE store_database SET records = records - 1, bytes = bytes - length(OLD.properties) WHERE oid = OLD.database;
END;
)sql",
};
// SQLite treats a file with fewer bytes as a new, empty database.
constexpr std::uintmax_t smallestFile = 512;
constexpr auto schemaVersion = static_cast<std::int64_t>(std::size(migrations));

namespace fs = std::filesystem;

struct OpenDatabase {
    std::mutex mutex;
    std::unique_ptr<Connection> connection;
};

OpenDatabase& openDatabase()
{
    static OpenDatabase database;
    return database;
}

std::string quoted(const fs::path& file)
{
    return "\"" + file.string() + "\"";
}

// The size of the file in bytes. Nothing if it can't be read, for example because the file doesn't exist.
std::optional<std::uintmax_t> sizeOf(const fs::path& file)
{
    std::error_code error;
    const auto bytes = fs::file_size(file, error);
    return error ? std::nullopt : std::optional(bytes);
}

// Returns the path of the write-ahead log. The log contains changes that aren't in the database file yet. If `file` is
// a link, the log is beside the target of the link.
fs::path logOf(const fs::path& file)
{
    std::error_code error;
    const fs::path target = fs::weakly_canonical(file, error);
    return (error ? file : target).string() + "-wal";
}

bool hasLog(const fs::path& file)
{
    return sizeOf(logOf(file)).value_or(0) > 0;
}

// If the database file is missing or empty, renames its write-ahead log. Otherwise SQLite would delete the log, which
// may be the only copy of the changes. Returns false if the log can't be renamed. `sentence` says where the renamed log
// is, or that the renaming failed.
bool keepOrphanedLog(const fs::path& file, std::string& sentence)
{
    if (sizeOf(file).value_or(0) > 0 || !hasLog(file))
        return true;
    const fs::path log = logOf(file);
    fs::path kept = log.string() + ".kept";
    for (int number = 2; fs::exists(fs::symlink_status(kept)); ++number)
        kept = log.string() + ".kept" + std::to_string(number);
    std::error_code error;
    fs::rename(log, kept, error);
    if (error || host::flushFolder(log.parent_path()) != 0) {
        sentence = "The changes in " + quoted(log) +
                   ", whose database is missing or empty, can't be saved: the file can't be renamed.";
        return false;
    }
    sentence =
        quoted(log) + " holds changes of a database that is missing or empty. It was kept as " + quoted(kept) + ".";
    return true;
}

// The sentence for the user, from the SQLite error code of the first access that failed.
std::string sentenceOf(const fs::path& file, int code, const std::string& message)
{
    switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return "The device's database " + quoted(file) + " is open in another program.";
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
        return "The device's database " + quoted(file) + " is damaged (" + message + "). It was left as it is.";
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_CANTOPEN:
        return "The device's database " + quoted(file) + " can't be opened for writing (" + message + ").";
    default:
        return "The device's database " + quoted(file) + " can't be used (" + message + ").";
    }
}

// Checks the file without writing to it, since it may be another program's database. Returns a sentence for the user,
// or an empty text if the database can be used.
std::string faultOf(sqlite3* database, Connection& connection, const fs::path& file)
{
    const auto failed = [&] { return sentenceOf(file, sqlite3_errcode(database), connection.lastMessage()); };
    // The exclusive mode must be set before the first access. In this mode the write-ahead log needs no shared memory,
    // and no other process can open the database.
    if (connection.execute("PRAGMA locking_mode = EXCLUSIVE; PRAGMA foreign_keys = ON") != Step::Done)
        return failed();
    const auto version = connection.readNumber("PRAGMA user_version");
    const auto id = connection.readNumber("PRAGMA application_id");
    const auto tables = connection.readNumber("SELECT count(*) FROM sqlite_schema");
    if (!version || !id || !tables)
        return failed();
    if (sqlite3_db_readonly(database, "main") != 0)
        return sentenceOf(file, SQLITE_READONLY, "read-only");
    if (*tables > 0 && *id != applicationId)
        return quoted(file) + " is not the database of a Quillbox device. It was left as it is.";
    if (*version > schemaVersion)
        return "The device's database " + quoted(file) + " was written by a newer version of Quillbox (schema " +
               std::to_string(*version) + ", this one knows " + std::to_string(schemaVersion) + ").";
    if (*version < 0 || (*version > 0) != (*tables > 0))
        return sentenceOf(file, SQLITE_CORRUPT,
                          "schema " + std::to_string(*version) + " with " + std::to_string(*tables) +
                              " tables and indexes");
    // integrity_check also compares the indexes with the tables. Without this check, a backup would leave out a record
    // that is missing from an index, without any error.
    Statement check = connection.prepare("PRAGMA integrity_check(1)");
    if (check.step() != Step::Row)
        return failed();
    return check.text(0) == u"ok" ? "" : sentenceOf(file, SQLITE_CORRUPT, text::toUtf8(check.text(0)));
}

// Migrates the file to the schema of this version. Each step is atomic. On failure returns a sentence for the
// user, otherwise an empty text.
std::string migrate(sqlite3* database, Connection& connection, const fs::path& file)
{
    const auto failed = [&] { return sentenceOf(file, sqlite3_errcode(database), connection.lastMessage()); };
    if (connection.execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL") != Step::Done)
        return failed();
    const auto version = connection.readNumber("PRAGMA user_version");
    if (!version)
        return failed();
    for (auto next = static_cast<std::size_t>(*version); next < std::size(migrations); ++next) {
        Transaction transaction(connection);
        const std::string numbers = "PRAGMA application_id = " + std::to_string(applicationId) +
                                    "; PRAGMA user_version = " + std::to_string(next + 1);
        if (transaction.begun() != Step::Done || connection.execute(migrations[next]) != Step::Done ||
            connection.execute(numbers) != Step::Done || transaction.commit() != Step::Done)
            return failed();
    }
    return "";
}

// By default SQLite allocates and initialises memory for many small objects and for 20 pages in advance. A backup of
// files uses little of this memory, so most of it would only make the process larger. The settings can be made only
// before the first database is opened. Later calls fail and change nothing.
void allocateOnDemand()
{
    (void)sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);
    (void)sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
}

}  // namespace

bool openDeviceDatabase(const fs::path& file, std::string& sentence)
{
    const auto refuse = [&](std::string why) {
        sentence = std::move(why);
        return false;
    };
    const std::scoped_lock lock(openDatabase().mutex);
    if (openDatabase().connection != nullptr)
        return refuse("A device's database is open already.");
    // An absolute path is never one of SQLite's special names.
    const fs::path path = fs::absolute(file);
    if (const auto bytes = sizeOf(path).value_or(0); bytes > 0 && bytes < smallestFile)
        return refuse(sentenceOf(path, SQLITE_NOTADB, "it has " + std::to_string(bytes) + " bytes"));
    std::string warning;
    if (!keepOrphanedLog(path, warning))
        return refuse(warning);
    allocateOnDemand();
    sqlite3* database = nullptr;
    const int opened = sqlite3_open_v2(path.c_str(), &database,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    auto connection = std::make_unique<Connection>(database);
    if (opened != SQLITE_OK)
        return refuse(sentenceOf(path, opened, connection->lastMessage()));
    if (std::string fault = faultOf(database, *connection, path); !fault.empty()) {
        // A killed process may have left a log. Without this setting, closing would write the changes in the log into
        // the database file.
        sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, hasLog(path) ? 1 : 0, nullptr);
        return refuse(std::move(fault));
    }
    if (std::string fault = migrate(database, *connection, path); !fault.empty())
        return refuse(std::move(fault));
    openDatabase().connection = std::move(connection);
    sentence = std::move(warning);
    return true;
}

void closeDeviceDatabase()
{
    const std::scoped_lock lock(openDatabase().mutex);
    if (openDatabase().connection != nullptr)
        openDatabase().connection->endGathering();
    openDatabase().connection.reset();
}

DatabaseUse::DatabaseUse(Gathered gathered) : lock_(openDatabase().mutex), connection_(openDatabase().connection.get())
{
    if (connection_ != nullptr && gathered == Gathered::End)
        connection_->endGathering();
}

}  // namespace platform::database

#include "database_import.h"

#include "failure.h"
#include "screen_text/screen_text.h"
#include "stored_databases.h"

#include "text/host_name.h"

#include "ce/error.h"

#include <algorithm>
#include <utility>

namespace quillbox_device {

using database_formats::DatabaseHead;
using database_formats::FormatFault;
using screen_text::counted;
using screen_text::onScreen;

namespace {

constexpr std::size_t MostDatabases = 0xFFFF;
// One transaction contains the changes that are made within this time. A longer time would save little, and the log
// beside the database would grow.
constexpr std::chrono::milliseconds GatheredTime(500);

std::string inQuotes(const std::u16string& name)
{
    return "\"" + onScreen(name) + "\"";
}

void check(const DatabaseHead& head)
{
    if (head.name.size() >= CEDB_MAXDBASENAMELEN || head.name.find(u'\0') != std::u16string::npos)
        throw FormatFault("a database's name has more than 31 characters, or a NUL");
    if (head.sort.size() > CEDB_MAXSORTORDER)
        throw FormatFault("a database has more than four sort orders");
}

void complete(std::unique_ptr<DatabaseHandle>& database)
{
    if (database && !database->close())
        throw FormatFault("the records can't be stored");
    database.reset();
}

CEOID made(DatabaseHead head)
{
    const CEOID oid =
        CeCreateDatabase(head.name.c_str(), head.type, static_cast<WORD>(head.sort.size()), head.sort.data());
    if (oid == 0)
        throw FormatFault("the database " + inQuotes(head.name) + " can't be made");
    return oid;
}

// Selects a database of the type `head.type` on the device and returns its name. If there is none, returns the usual
// name `head.name`. If there are several, selects the one with the usual name. Throws a FormatFault if none of them has
// the usual name.
std::u16string onlyOneOfType(const DatabaseHead& head)
{
    std::vector<std::u16string> names;
    for (const StoredDatabase& database : storedDatabases()) {
        if (database.info.dwDbaseType == head.type)
            names.emplace_back(database.info.szDbaseName);
    }
    if (names.empty() || std::ranges::find(names, head.name) != names.end())
        return head.name;
    if (names.size() > 1)
        throw FormatFault("the device has several databases of this type; select one with --name");
    return names.front();
}

}  // namespace

DatabaseImport::DatabaseImport(const std::optional<std::string>& name, Existing existing, bool formatHasHeads)
    : existing_(existing), formatHasHeads_(formatHasHeads)
{
    if (name)
        name_ = platform::text::fromUtf8(*name);
}

std::size_t DatabaseImport::begin(const DatabaseHead& found)
{
    if (name_ && !databases_.empty())
        throw FormatFault("the file holds several databases, and --name is for one");
    gatherChanges();
    if (databases_.size() == MostDatabases)
        throw FormatFault("the file has more than 65535 databases");
    // In a format with heads, the records of a database follow its head. So the previous database is complete.
    if (formatHasHeads_ && !databases_.empty())
        complete(databases_.back());
    DatabaseHead head = destination(found);
    check(head);
    const auto old = databaseNamed(head.name);
    if (old)
        refuseIfUnusable(head.name, *old, found.type);
    std::optional<std::uint64_t> replaced;
    CEOID oid = old ? old->oid : 0;
    if (old && existing_ == Existing::Replaced) {
        if (!formatHasHeads_)
            head = headOf(old->info);
        if (!CeDeleteDatabase(oid))
            throw FormatFault("the database " + inQuotes(head.name) + " can't be deleted");
        replaced = old->info.wNumRecords;
        oid = 0;
    }
    imported_.push_back({oid != 0 ? std::u16string(old->info.szDbaseName) : head.name, !old,
                         old ? old->info.dwDbaseType : head.type, replaced});
    if (oid == 0)
        made_.insert(oid = made(std::move(head)));
    known_.push_back(old && existing_ == Existing::AddedTo ? KnownRecords(oid) : KnownRecords());
    databases_.push_back(std::make_unique<DatabaseHandle>(oid));
    return databases_.size() - 1;
}

void DatabaseImport::add(std::size_t database, std::span<const CEPROPVAL> properties)
{
    gatherChanges();
    Imported& imported = imported_[database];
    switch (known_[database].store(databases_[database]->handle(), imported.type, properties)) {
    case Taken::Added:
        ++imported.added;
        break;
    case Taken::Changed:
        ++imported.changed;
        break;
    case Taken::Unchanged:
        ++imported.unchanged;
        break;
    }
}

void DatabaseImport::finish()
{
    for (auto& database : databases_)
        complete(database);
    storeChanges();
}

// Ending a transaction takes as long as storing some records. So all changes that are made within GatheredTime share
// one transaction, even if they belong to many databases.
void DatabaseImport::gatherChanges()
{
    const auto now = std::chrono::steady_clock::now();
    if (gathering_ && now - *gathering_ < GatheredTime)
        return;
    storeChanges();
    if (!BeginStoreChange())
        throw FormatFault("the device's database can't be written");
    gathering_ = now;
}

void DatabaseImport::storeChanges()
{
    if (std::exchange(gathering_, std::nullopt) && !EndStoreChange(TRUE))
        throw FormatFault(GetLastError() == ERROR_DISK_FULL ? "the disk has no room for the records"
                                                            : "the records can't be stored");
}

std::string DatabaseImport::summary() const
{
    std::string lines;
    for (const Imported& database : imported_) {
        lines += onScreen(database.name) + ": ";
        if (database.replaced)
            lines += counted(*database.replaced, "record") + " replaced by " + std::to_string(database.added);
        else
            lines += (database.isNew ? "made, " : "") + counted(database.added, "record") + " added";
        if (database.changed != 0)
            lines += ", " + std::to_string(database.changed) + " changed";
        if (database.unchanged != 0)
            lines += ", " + std::to_string(database.unchanged) + " there already";
        lines += "\n";
    }
    return lines;
}

std::vector<std::u16string> DatabaseImport::namesOfNoFile() const
{
    std::vector<std::u16string> names;
    for (const Imported& database : imported_)
        if (!platform::text::toHostName(database.name + u".CDB"))
            names.push_back(database.name);
    return names;
}

void DatabaseImport::refuseIfUnusable(const std::u16string& wantedName, const StoredDatabase& old,
                                      DWORD typeInFile) const
{
    const std::string name = "the database " + inQuotes(wantedName);
    if (made_.contains(old.oid))
        throw FormatFault(name + " is in the file twice");
    if (existing_ == Existing::Refused)
        throw Failure("T" + name.substr(1) + " exists; --replace replaces it, --add adds to it. Nothing was imported.");
    if (!formatHasHeads_ && typeInFile != 0 && old.info.dwDbaseType != typeInFile)
        throw FormatFault(name + " is of type " + std::to_string(old.info.dwDbaseType) +
                          ", but the records in the file are of type " + std::to_string(typeInFile));
}

// Returns the head with the name of the database to import into. This name can differ from the one in `head`. For
// example, the device's database of contacts may not have the usual name.
DatabaseHead DatabaseImport::destination(DatabaseHead head) const
{
    if (name_) {
        head.name = *name_;
    } else if (!formatHasHeads_ && head.name.empty()) {
        throw Failure("This file doesn't contain the name of its database. Give it with --name.", exitBadUsage);
    } else if (!formatHasHeads_) {
        head.name = onlyOneOfType(head);
    }
    return head;
}

}  // namespace quillbox_device

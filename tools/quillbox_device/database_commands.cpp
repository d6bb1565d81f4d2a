#include "database_commands.h"

#include "archive/host_output.h"
#include "archive/long_work.h"
#include "existing_device.h"
#include "failure.h"
#include "host_input.h"
#include "report.h"
#include "screen_text/screen_text.h"
#include "stored_databases.h"

#include "database_formats/database_format.h"

#include "kernel/standard_streams.h"
#include "text/host_name.h"

#include <algorithm>
#include <iostream>

namespace quillbox_device {

namespace fs = std::filesystem;
using database_formats::Format;
using database_formats::FormatFault;

namespace {

void exportOne(const StoredDatabase& database, database_formats::DatabaseWriter& writer)
{
    const std::string name = "\"" + screen_text::onScreen(database.info.szDbaseName) + "\"";
    try {
        writer.begin(headOf(database.info));
        const DatabaseHandle opened(database.oid);
        ReadBlock block;
        WORD count = 0;
        while (CeReadRecordProps(opened.handle(), CEDB_ALLOWREALLOC, &count, nullptr, &block.bytes, &block.size) != 0) {
            archive::checkStop();
            if (count != 0)  // no reader accepts a record without properties
                writer.add({reinterpret_cast<const CEPROPVAL*>(block.bytes), count});
        }
        if (GetLastError() != ERROR_NO_MORE_ITEMS)
            throw Failure("A record of " + name + " can't be read.");
    } catch (const FormatFault& fault) {
        throw Failure("The database " + name + " can't be written: " + fault.what() + ".");
    }
}

std::vector<StoredDatabase> wantedDatabases(const std::optional<std::string>& name, Format format)
{
    if (name) {
        const auto database = databaseNamed(platform::text::fromUtf8(*name));
        if (!database)
            throw Failure("The device has no database \"" + *name + "\".");
        return {*database};
    }
    auto databases = storedDatabases();
    std::erase_if(databases, [format](const auto& database) {
        return !database_formats::holds(format, database.info.dwDbaseType);
    });
    if (databases.empty() && format != Format::JsonLines)
        throw Failure("The device has no database of a type that the format can hold.");
    if (databases.size() > 1 && format == Format::Csv)
        throw Failure("A CSV file holds one database. Select it with --name.");
    return databases;
}

database_formats::ColumnMap columnsFrom(const std::string& file)
{
    if (file.empty())
        return {};
    Input input(file);
    try {
        return database_formats::columnMapFrom(input.stream());
    } catch (const FormatFault& fault) {
        throw Failure("\"" + file + "\", line " + std::to_string(fault.line) + ": " + fault.what() + ".", exitBadUsage);
    }
}

void report(const database_formats::LeftOut& leftOut)
{
    for (const std::string& sentence : leftOut.sentences())
        std::cerr << "quillbox-device: " << sentence << ".\n";
}

}  // namespace

void listDatabases(const fs::path& device, bool json)
{
    const DeviceToRead opened(device);
    Report report(json, {"databases"});
    for (const StoredDatabase& database : storedDatabases())
        report.add("databases", jsonOf(database), textOf(database));
    report.finish();
}

void exportDatabases(const fs::path& device, const std::optional<std::string>& name, std::optional<Format> format,
                     const std::string& file, bool force)
{
    const DeviceToRead opened(device);
    const Format wanted = format.value_or(database_formats::formatOfFile(file));
    const auto databases = wantedDatabases(name, wanted);
    archive::Output output(file, force);
    database_formats::LeftOut leftOut;
    const auto writer = database_formats::makeWriter(wanted, output.stream(), leftOut);
    for (const StoredDatabase& database : databases)
        exportOne(database, *writer);
    try {
        writer->finish();
    } catch (const FormatFault& fault) {
        throw Failure("\"" + file + "\" can't be written: " + fault.what() + ".");
    }
    output.finish();
    report(leftOut);
}

void importDatabases(const fs::path& device, const std::optional<std::string>& name, std::optional<Format> format,
                     const std::string& file, Existing existing, const std::string& columnFile)
{
    const Format wanted = format.value_or(database_formats::formatOfFile(file));
    if (!columnFile.empty() && wanted != Format::Csv)
        throw Failure("--columns is for CSV.", exitBadUsage);
    const database_formats::ColumnMap columns = columnsFrom(columnFile);
    Input input(file);
    const auto opened = openExisting(device);
    database_formats::LeftOut leftOut;
    std::string summary;
    std::vector<std::u16string> namesOfNoFile;
    changeAsAWhole(*opened, [&] {
        DatabaseImport import(name, existing, wanted == Format::JsonLines);
        try {
            database_formats::read(wanted, input.stream(), import, leftOut, columns);
            import.finish();
            summary = import.summary();
            namesOfNoFile = import.namesOfNoFile();
        } catch (const FormatFault& fault) {
            const std::string line = fault.line != 0 ? ", line " + std::to_string(fault.line) : "";
            throw Failure("\"" + file + "\"" + line + ": " + fault.what() + ". Nothing was imported.");
        }
    });
    std::cout << (summary.empty() ? "The file has no records.\n" : summary);
    for (const std::u16string& name : namesOfNoFile)
        std::cerr << "quillbox-device: \"" << screen_text::onScreen(name)
                  << "\" can't be the name of a file, so a backup may leave this database out.\n";
    report(leftOut);
    if (!platform::kernel::standardOutputIsWritten())
        throw Failure("All of the file was imported, but standard output can't be written.");
}

}  // namespace quillbox_device

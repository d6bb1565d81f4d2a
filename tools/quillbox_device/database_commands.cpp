// database_commands.cpp - databases as files of the host, and back.

#include "commands.h"
#include "database_import.h"
#include "existing_device.h"
#include "failure.h"
#include "host_files.h"
#include "open_database.h"
#include "screen_text/screen_text.h"
#include "stored_databases.h"

#include "database_forms/database_form.h"

#include "ce/personal_databases.h"

#include "kernel/standard_streams.h"
#include "text/host_name.h"

#include <algorithm>
#include <iostream>

namespace quillbox_device {

namespace fs = std::filesystem;
using database_forms::FormFault;

namespace {

void exportOne(const StoredDatabase& database, database_forms::DatabaseWriter& writer)
{
    const std::string name = "\"" + screen_text::onScreen(database.info.szDbaseName) + "\"";
    try {
        writer.begin(headOf(database.info));
        const OpenDatabase opened(database.oid);
        ReadBlock block;
        WORD count = 0;
        while (CeReadRecordProps(opened.handle(), CEDB_ALLOWREALLOC, &count, nullptr, &block.bytes, &block.size) != 0) {
            if (count != 0)  // a record without properties is none for any reader
                writer.add({reinterpret_cast<const CEPROPVAL*>(block.bytes), count});
        }
        if (GetLastError() != ERROR_NO_MORE_ITEMS)
            throw Failure("A record of " + name + " can't be read.");
    } catch (const FormFault& fault) {
        throw Failure("The database " + name + " can't be written: " + fault.what() + ".");
    }
}

bool holds(Form form, DWORD type)
{
    switch (form) {
    case Form::VCard:
        return type == personal::ContactsType;
    case Form::ICalendar:
        return type == personal::AppointmentsType || type == personal::TasksType;
    default:
        return true;
    }
}

std::vector<StoredDatabase> wantedDatabases(const std::optional<std::string>& name, Form form)
{
    if (name) {
        const auto database = databaseNamed(platform::text::fromUtf8(*name));
        if (!database)
            throw Failure("The device has no database \"" + *name + "\".");
        return {*database};
    }
    auto databases = storedDatabases();
    std::erase_if(databases, [form](const auto& database) { return !holds(form, database.info.dwDbaseType); });
    if (databases.empty() && form != Form::JsonLines)
        throw Failure("The device has no database of a type that the form holds.");
    if (databases.size() > 1 && form == Form::Csv)
        throw Failure("CSV holds one database; --name says which.");
    return databases;
}

}  // namespace

void listDatabases(const fs::path& device)
{
    const auto opened = openExisting(device);
    for (const StoredDatabase& database : storedDatabases())
        print(database);
}

void exportDatabases(const fs::path& device, const std::optional<std::string>& name, std::optional<Form> form,
                     const std::string& file, bool force)
{
    const auto opened = openExisting(device);
    const Form wanted = form.value_or(database_forms::formOfFile(file));
    const auto databases = wantedDatabases(name, wanted);
    Output output(file, force);
    const auto writer = database_forms::makeWriter(wanted, output.stream());
    for (const StoredDatabase& database : databases)
        exportOne(database, *writer);
    try {
        writer->finish();
    } catch (const FormFault& fault) {
        throw Failure("\"" + file + "\" can't be written: " + fault.what() + ".");
    }
    output.finish();
}

void importDatabases(const fs::path& device, const std::optional<std::string>& name, std::optional<Form> form,
                     const std::string& file, Existing existing)
{
    const Form wanted = form.value_or(database_forms::formOfFile(file));
    if (wanted == Form::Csv && !name)
        throw Failure("CSV doesn't tell its database's name; --name does.", exitBadUsage);
    Input input(file);
    const auto opened = openExisting(device);
    database_forms::LeftOut leftOut;
    std::string summary;
    std::vector<std::u16string> namesOfNoFile;
    changeAsAWhole(*opened, [&] {
        DatabaseImport import(name, existing, wanted == Form::JsonLines);
        try {
            database_forms::read(wanted, input.stream(), import, leftOut);
            import.finish();
            summary = import.summary();
            namesOfNoFile = import.namesOfNoFile();
        } catch (const FormFault& fault) {
            const std::string line = fault.line != 0 ? ", line " + std::to_string(fault.line) : "";
            throw Failure("\"" + file + "\"" + line + ": " + fault.what() + ". Nothing was imported.");
        }
    });
    std::cout << summary;
    for (const std::u16string& name : namesOfNoFile)
        std::cerr << "quillbox-device: \"" << screen_text::onScreen(name)
                  << "\" can't be the name of a file, so a backup may leave this database out.\n";
    if (leftOut.count() != 0)
        std::cerr << "quillbox-device: " << leftOut.sentence() << ".\n";
    if (leftOut.guesses() != 0)
        std::cerr << "quillbox-device: " << leftOut.guessSentence() << ".\n";
    if (!platform::kernel::standardOutputIsWritten())
        throw Failure("All of the file was imported, but standard output can't be written.");
}

}  // namespace quillbox_device

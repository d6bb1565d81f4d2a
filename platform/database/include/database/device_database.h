// device_database.h - the device's one database file: opened once a process, shared by the rooms that keep
// something in it.
#pragma once

#include "database/connection.h"

#include <filesystem>
#include <mutex>
#include <string>

namespace platform::database {

// Opens the file, makes it if it is missing, and brings it to this version's schema. False with a sentence
// for the user if it is damaged, open elsewhere, newer than this version or not a device's database; the
// file is left as it is then. Fails also while one is open.
// With success `sentence` is empty, or a warning: changes that stand beside a file that is missing or empty were put
// aside.
[[nodiscard]] bool openDeviceDatabase(const std::filesystem::path& file, std::string& sentence);

// Closes it, with what was gathered on the disk; harmless if none is open.
void closeDeviceDatabase();

// Whether a use of the database goes on with changes that others gathered, or has them put on the disk first.
enum class Gathered { End, GoOn };

// The open database for the length of one call: no other thread uses it meanwhile. Not to be nested.
class DatabaseUse {
public:
    explicit DatabaseUse(Gathered gathered = Gathered::End);

    // False if no database is open.
    explicit operator bool() const { return connection_ != nullptr; }
    Connection& operator*() const { return *connection_; }
    Connection* operator->() const { return connection_; }

private:
    std::unique_lock<std::mutex> lock_;
    Connection* connection_;
};

}  // namespace platform::database

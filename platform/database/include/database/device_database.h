// device_database.h - the device's database file, opened once per process and shared by the rooms that store
// something in it.
#pragma once

#include "database/connection.h"

#include <filesystem>
#include <mutex>
#include <string>

namespace platform::database {

// Opens the file, creates it if it is missing, and migrates it to this version's schema. On failure returns false and
// sets `sentence` to a sentence for the user. If the file is damaged, open in another program, newer than this version
// or not a device's database, it is unchanged. The call also fails if this process has a database open already.
// On success `sentence` is empty, or it is a warning that the file was missing or empty and that the write-ahead log
// beside it was renamed.
[[nodiscard]] bool openDeviceDatabase(const std::filesystem::path& file, std::string& sentence);

// Calls endGathering(), which commits the gathered changes unless they are held, and closes the file. Does nothing if
// no file is open.
void closeDeviceDatabase();

// Whether a use of the database first commits the changes that were gathered so far (End) or goes on gathering (GoOn).
enum class Gathered { End, GoOn };

// Locks the open database as long as the object exists. A thread that has a DatabaseUse must not create another one.
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

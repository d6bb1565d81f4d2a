// device_database.h - opens and closes the device's database file, and lets all components use it under a lock. Only
// one such file can be open in a process at a time.
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

// Commits the pending changes (Connection::gather) and closes the file. If Connection::holdGathering() is in effect,
// the pending changes are rolled back instead. Does nothing if no file is open.
void closeDeviceDatabase();

// What a new DatabaseUse does with the pending changes (Connection::gather). End commits them, unless
// Connection::holdGathering() prevents this. GoOn leaves them pending.
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

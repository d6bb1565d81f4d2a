// database_handle.h - classes for reading the records of a database: its handle, and the memory for a record.
#pragma once

#include "failure.h"

#include "ce/memory.h"
#include "ce/store.h"

#include <utility>

namespace quillbox_device {

// An open database. The destructor closes it.
class DatabaseHandle {
public:
    // Throws a Failure if the database can't be opened.
    explicit DatabaseHandle(CEOID oid) : handle_(CeOpenDatabase(&oid, nullptr, 0, CEDB_AUTOINCREMENT, nullptr))
    {
        if (handle_ == INVALID_HANDLE_VALUE)
            throw Failure("A database can't be opened.");
    }
    DatabaseHandle(const DatabaseHandle&) = delete;
    DatabaseHandle& operator=(const DatabaseHandle&) = delete;
    ~DatabaseHandle() { (void)close(); }

    HANDLE handle() const { return handle_; }
    // Closes the database. Returns false if something that was written to it couldn't be stored.
    [[nodiscard]] bool close() { return CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) != 0; }

private:
    HANDLE handle_;
};

// The memory that CeReadRecordProps reads records into. The call enlarges it as needed.
struct ReadBlock {
    ReadBlock() = default;
    ReadBlock(const ReadBlock&) = delete;
    ReadBlock& operator=(const ReadBlock&) = delete;
    ~ReadBlock() { LocalFree(bytes); }

    BYTE* bytes = nullptr;
    DWORD size = 0;
};

}  // namespace quillbox_device

// open_database.h - a database of the open device whose records are read or written.
#pragma once

#include "failure.h"

#include "ce/memory.h"
#include "ce/store.h"

#include <utility>

namespace quillbox_device {

// Closed when it goes.
class OpenDatabase {
public:
    // Throws a Failure.
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

}  // namespace quillbox_device

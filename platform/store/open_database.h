// open_database.h - what a database's handle stands for: a pointer into its records, and the changes that it
// gathers so that they share one flush.
//
// All of it is touched only while the device's database is in use (database::DatabaseUse).
#pragma once

#include "connection.h"
#include "handle_table.h"

#include "ce/store.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace platform::store {

// Where the pointer stands: at the first record whose oid is at least `from`. Deletions so move it on by
// themselves.
struct RecordPointer {
    // Behind the last record, and whatever is added.
    static constexpr std::int64_t Behind = std::int64_t{1} << 32;

    std::int64_t from = 0;
    bool exact = false;  // it was led to the record `from` itself
};

// The position of a record, counted from 0, for as long as no record is removed: new ones stand behind all others.
struct KnownPosition {
    CEOID oid = 0;
    DWORD position = 0;
    std::uint64_t recordsRemoved = 0;
};

class OpenDatabase final : public kernel::Object {
public:
    OpenDatabase(CEOID database, bool autoIncrement) : database_(database), autoIncrement_(autoIncrement) {}

    [[nodiscard]] CEOID database() const { return database_; }
    [[nodiscard]] bool autoIncrement() const { return autoIncrement_; }

    // Before each change: opens the gathering that it belongs to. 0, or the platform's number.
    [[nodiscard]] DWORD beginChange(database::Connection& connection);

    // After it, with the bytes that it wrote.
    void countChange(std::size_t bytes);

    // Puts the gathered changes on the disk; an error if any were lost since the handle was opened.
    [[nodiscard]] DWORD close() override;

    RecordPointer pointer;
    std::optional<KnownPosition> known;

private:
    [[nodiscard]] bool gatheredEnough() const;
    void gatheringEnded(database::Step step);
    [[nodiscard]] DWORD takeUntoldLoss();

    const CEOID database_;
    const bool autoIncrement_;
    bool closed_ = false;
    bool owns_ = false;  // the gathering that is open is this handle's
    unsigned changes_ = 0;
    std::size_t bytes_ = 0;
    std::chrono::steady_clock::time_point begun_;
    DWORD loss_ = 0;        // why changes were lost
    DWORD untoldLoss_ = 0;  // the same, until a change has told it
};

}  // namespace platform::store

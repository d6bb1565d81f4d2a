// open_database.h - what a database's handle stands for: a pointer into its records, and the changes that it
// gathers so that they share one flush.
//
// All of it is touched only while the device's database is in use (database::DatabaseUse).
#pragma once

#include "database/connection.h"
#include "kernel/handle_table.h"
#include "record_bytes.h"

#include "ce/store.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

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

// What one change left: of a record its new bytes, none if it was removed.
struct GatheredChange {
    CEOID record = 0;
    std::optional<RecordBytes> bytes;
};

class OpenDatabase final : public kernel::Object {
public:
    OpenDatabase(CEOID database, std::u16string name, bool autoIncrement)
        : database_(database), name_(std::move(name)), autoIncrement_(autoIncrement)
    {
    }

    [[nodiscard]] CEOID database() const { return database_; }
    [[nodiscard]] const std::u16string& name() const { return name_; }
    [[nodiscard]] bool autoIncrement() const { return autoIncrement_; }

    // Before each change: opens the gathering that it belongs to. 0, or the platform's number.
    [[nodiscard]] DWORD beginChange(database::Connection& connection);

    // After it. Kept is what may have to be tried again.
    void keepChange(GatheredChange change);

    // Puts the gathered changes on the disk; an error if any were lost since the handle was opened.
    [[nodiscard]] DWORD close() override;

    RecordPointer pointer;
    std::optional<KnownPosition> known;

private:
    [[nodiscard]] DWORD joinChange(database::Connection& connection);
    [[nodiscard]] bool gatheredEnough() const;
    void gatheringEnded(database::Connection& connection, database::Step step);
    [[nodiscard]] database::Step changeTogether(database::Connection& connection,
                                                std::span<const GatheredChange> changes) const;
    void changeWhatFits(database::Connection& connection, std::span<const GatheredChange> changes);
    void noteLoss(database::Step step);

    const CEOID database_;
    const std::u16string name_;
    const bool autoIncrement_;
    bool closed_ = false;
    bool owns_ = false;         // the gathering that is open is this handle's
    std::uint64_t joined_ = 0;  // the last change of several calls that it had a part in
    std::vector<GatheredChange> changes_;
    std::size_t bytes_ = 0;
    std::chrono::steady_clock::time_point begun_;
    DWORD loss_ = 0;  // why changes were lost
};

}  // namespace platform::store

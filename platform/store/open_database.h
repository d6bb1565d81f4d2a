// open_database.h - the object of a database's handle: a pointer into the records, and the changes that the handle
// gathers so that they share one flush.
//
// Use it only while a database::DatabaseUse lives.
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

// The pointer is at the first record whose oid is at least `from`. So the deletion of that record moves it to the next
// one without further work.
struct RecordPointer {
    // The end: above every oid, so it stays the end when records are added.
    static constexpr std::int64_t AfterLast = std::int64_t{1} << 32;

    std::int64_t from = 0;
    bool exact = false;  // the record `from` existed when the pointer was set
};

// The position of a record, counted from 0. It is valid until a record is removed, because new records are appended.
struct KnownPosition {
    CEOID oid = 0;
    DWORD position = 0;
    std::uint64_t recordsRemoved = 0;
};

// A changed record with its new bytes. No bytes if it was removed.
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

    // Call it before each change. Begins to gather changes unless this handle does so already. Ends the gathering of
    // another handle, and its own one if that is large or old enough. 0, or the platform's error number.
    [[nodiscard]] DWORD beginChange(database::Connection& connection);

    // Call it after each change. Keeps a copy, which is needed to repeat the change if the disk is too full for all.
    void keepChange(GatheredChange change);

    // Writes the gathered changes to the disk. Returns an error if any change was lost since the handle was opened.
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
    bool owns_ = false;         // the open gathering is this handle's
    std::uint64_t joined_ = 0;  // StoreState::changes of the last change of several calls that it took part in
    std::vector<GatheredChange> changes_;
    std::size_t bytes_ = 0;
    std::chrono::steady_clock::time_point begun_;
    DWORD loss_ = 0;  // why changes were lost
};

}  // namespace platform::store

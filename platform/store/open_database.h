// open_database.h - the object to which the handle of an open database refers. It contains the handle's record pointer
// and copies of its pending changes. A change is pending while its transaction isn't committed (Connection::gather).
// One commit, and so one flush of the disk, is enough for many changes.
//
// Use it only while a database::DatabaseUse lives. But call close() without one, because close() creates its own.
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

// The pointer is at the first record whose oid is at least `from`. So if that record is deleted, the pointer is at the
// next record without further work.
struct RecordPointer {
    // A pointer with this number is after the last record. The number is above every oid, so the pointer stays there
    // when records are added.
    static constexpr std::int64_t AfterLast = std::int64_t{1} << 32;

    std::int64_t from = 0;
    bool exact = false;  // a record with the oid `from` existed when the pointer was set
};

// The position of a record, counted from 0. New records are appended, so the position is valid until a record is
// removed.
struct KnownPosition {
    CEOID oid = 0;
    DWORD position = 0;
    std::uint64_t recordsRemoved = 0;  // StoreState::recordsRemoved when the position was stored
};

// A changed record with its new bytes. There are no bytes if the record was removed.
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

    // Prepares this handle for a change. Call this function before each change. Returns 0 or the platform's error
    // number. If another handle has pending changes, commits them. Commits those of this handle if they are many or
    // large, or if their transaction began some time ago. The change that follows is then pending. Between
    // BeginStoreChange and EndStoreChange the function commits nothing, and the change that follows belongs to the
    // transaction of BeginStoreChange.
    [[nodiscard]] DWORD beginChange(database::Connection& connection);

    // Keeps a copy of a pending change. Call this function after each change. If the disk has no space for all pending
    // changes, SQLite rolls them back. The handle then uses the copies to repeat as many changes as fit. Between
    // BeginStoreChange and EndStoreChange the function does nothing, because that transaction is atomic.
    void keepChange(GatheredChange change);

    // Writes the pending changes of this handle to the disk. Returns an error if any change was lost since the handle
    // was opened. Changes in the transaction of BeginStoreChange don't count: EndStoreChange writes them or returns the
    // error.
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
    bool owns_ = false;         // this handle began the open transaction of Connection::gather
    std::uint64_t joined_ = 0;  // StoreState::changes when joinChange last marked the database as modified
    std::vector<GatheredChange> changes_;
    std::size_t bytes_ = 0;
    std::chrono::steady_clock::time_point begun_;
    DWORD loss_ = 0;  // the reason of the last loss of changes; 0 if none was lost
};

}  // namespace platform::store

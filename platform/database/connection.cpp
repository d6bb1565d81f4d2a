#include "database/connection.h"

#include "text/host_name.h"

#include <sqlite3.h>

#include <new>
#include <utility>

namespace platform::database {

namespace {

Step stepOf(int result)
{
    switch (result & 0xFF) {
    case SQLITE_ROW:
        return Step::Row;
    case SQLITE_OK:
    case SQLITE_DONE:
        return Step::Done;
    case SQLITE_FULL:
        return Step::Full;
    case SQLITE_NOMEM:
        return Step::NoMemory;
    default:
        return Step::Failed;
    }
}

}  // namespace

Statement::Statement(Statement&& other) noexcept
    : home_(other.home_), statement_(std::exchange(other.statement_, nullptr))
{
}

Statement::~Statement()
{
    if (statement_ == nullptr)
        return;
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    try {
        home_->push_back(statement_);
    } catch (const std::bad_alloc&) {
        sqlite3_finalize(statement_);
    }
}

Step Statement::step()
{
    if (statement_ == nullptr)
        return Step::Failed;
    return stepOf(sqlite3_step(statement_));
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(statement_, column);
}

std::u16string Statement::text(int column) const
{
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return bytes == nullptr
               ? std::u16string()
               : text::fromUtf8({bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))});
}

std::span<const std::byte> Statement::bytes(int column) const
{
    const auto* bytes = static_cast<const std::byte*>(sqlite3_column_blob(statement_, column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

bool Statement::isNull(int column) const
{
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

void Statement::bindOne(int index, std::int64_t value)
{
    sqlite3_bind_int64(statement_, index, value);
}

void Statement::bindOne(int index, std::nullptr_t)
{
    sqlite3_bind_null(statement_, index);
}

void Statement::bindOne(int index, const std::u16string& text)
{
    const std::string utf8 = text::toUtf8(text);
    sqlite3_bind_text64(statement_, index, utf8.data(), utf8.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void Statement::bindOne(int index, std::span<const std::byte> bytes)
{
    // An empty span may have a null address, which SQLite would store as NULL.
    sqlite3_bind_blob64(statement_, index, bytes.empty() ? "" : static_cast<const void*>(bytes.data()), bytes.size(),
                        SQLITE_STATIC);
}

Connection::~Connection()
{
    for (auto& [sql, statements] : prepared_)
        for (sqlite3_stmt* statement : statements)
            sqlite3_finalize(statement);
    sqlite3_close(database_);
}

Statement Connection::prepare(Sql sql)
{
    Prepared& waiting = prepared_[sql.text()];
    sqlite3_stmt* statement = nullptr;
    if (waiting.empty()) {
        sqlite3_prepare_v3(database_, sql.text(), sql.size(), SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    } else {
        statement = waiting.back();
        waiting.pop_back();
    }
    return {waiting, statement};
}

Step Connection::execute(const std::string& sql)
{
    return run(sql.c_str());
}

std::optional<std::int64_t> Connection::readNumber(Sql sql)
{
    Statement statement = prepare(sql);
    if (statement.step() != Step::Row)
        return std::nullopt;
    return statement.integer(0);
}

Step Connection::gather(std::function<void(Step)> ended)
{
    if (isGathering())
        return Step::Done;
    endReading();
    const Step begun = prepare("BEGIN IMMEDIATE").step();
    if (begun == Step::Done)
        gatheringEnded_ = std::move(ended);
    return begun;
}

bool Connection::isGathering()
{
    if (gatheringEnded_ && sqlite3_get_autocommit(database_) != 0) {
        const Step step = stepOf(sqlite3_errcode(database_));
        held_ = false;
        std::exchange(gatheringEnded_, nullptr)(step == Step::Full || step == Step::NoMemory ? step : Step::Failed);
    }
    return gatheringEnded_ != nullptr;
}

void Connection::endGathering()
{
    endReading();
    if (isGathering() && !held_)
        std::exchange(gatheringEnded_, nullptr)(commit());
}

void Connection::releaseGathering(bool kept)
{
    if (!isGathering() || !std::exchange(held_, false))
        return;
    if (kept)
        return endGathering();
    undo();
    std::exchange(gatheringEnded_, nullptr)(Step::Failed);
}

// Commits the open transaction. If only the flush of the write-ahead log fails, the commit fails although the log
// contains the whole transaction. The next start of the program would then apply this transaction. So a second commit
// follows, which changes nothing. The second commit overwrites the beginning of the failed one in the log.
Step Connection::commit()
{
    const Step committed = run("COMMIT");
    if (committed == Step::Done)
        return committed;
    undo();
    const auto version = readNumber("PRAGMA user_version");
    if (version)
        (void)execute("PRAGMA user_version = " + std::to_string(*version));
    return committed;
}

void Connection::undo()
{
    if (sqlite3_get_autocommit(database_) == 0)
        (void)run("ROLLBACK");
}

Step Connection::run(const char* sql)
{
    return stepOf(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr));
}

void Connection::keepReading()
{
    if (!reading_ && !gatheringEnded_)
        reading_ = prepare("BEGIN").step() == Step::Done;
}

void Connection::endReading()
{
    if (std::exchange(reading_, false))
        (void)run("COMMIT");
}

std::int64_t Connection::lastInsertId() const
{
    return sqlite3_last_insert_rowid(database_);
}

std::string Connection::lastMessage() const
{
    return sqlite3_errmsg(database_);
}

Transaction::Transaction(Connection& connection)
    : connection_(connection), isPart_(connection.isGathering()),
      begun_(isPart_ ? connection.prepare("SAVEPOINT part").step() : connection.prepare("BEGIN IMMEDIATE").step())
{
}

Transaction::~Transaction()
{
    if (begun_ != Step::Done)
        return;
    if (isPart_)
        (void)connection_.run("ROLLBACK TO part; RELEASE part");
    else
        connection_.undo();
}

Step Transaction::commit()
{
    if (begun_ != Step::Done)
        return begun_;
    const Step committed = isPart_ ? connection_.prepare("RELEASE part").step() : connection_.commit();
    if (committed == Step::Done || !isPart_)
        begun_ = Step::Failed;  // so that the destructor rolls nothing back
    return committed;
}

}  // namespace platform::database

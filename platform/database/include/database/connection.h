// connection.h - one SQLite database file: its statements, its transactions. No other room includes SQLite.
//
// Only one thread at a time may use a connection. DatabaseUse (device_database.h) gives access to it under a lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace platform::database {

// The result of a step of a statement. After Full, NoMemory and Failed the database is unchanged.
enum class Step {
    Row,   // a row can be read
    Done,  // no more rows, and the change is made
    Full,  // the host's disk is full
    NoMemory,
    Failed,  // the database can't be read or written, or a constraint forbids it
};

class Connection;

// Version 14 of clang destroys the temporaries of a statement with a consteval call only when the block ends.
#ifdef __clang__
#define SQL_LITERAL constexpr
#else
#define SQL_LITERAL consteval
#endif

// The text of a statement. It must be a literal, because a connection finds its prepared statements by the address.
class Sql {
public:
    template <std::size_t Size>
    // NOLINTNEXTLINE(google-explicit-constructor): it is written where it is used
    SQL_LITERAL Sql(const char (&text)[Size]) : text_(text), size_(static_cast<int>(Size - 1))
    {
    }
    [[nodiscard]] const char* text() const { return text_; }
    [[nodiscard]] int size() const { return size_; }

private:
    const char* text_;
    int size_;
};

// The unused prepared statements of one text.
using Prepared = std::vector<sqlite3_stmt*>;

// A prepared statement, borrowed from its connection for one use.
class Statement {
public:
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&&) = delete;
    ~Statement();

    // Binds the parameters in their order: whole numbers, texts, bytes, nullptr for NULL. Texts and bytes
    // must live until the last step.
    template <class... Values>
    Statement& bind(const Values&... values)
    {
        int index = 0;
        (bindOne(++index, values), ...);
        return *this;
    }

    [[nodiscard]] Step step();

    // Read the row that step() found. Columns count from 0. Bytes are valid until the next step.
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] std::u16string text(int column) const;
    [[nodiscard]] std::span<const std::byte> bytes(int column) const;
    [[nodiscard]] bool isNull(int column) const;

private:
    friend class Connection;
    Statement(Prepared& home, sqlite3_stmt* statement) : home_(&home), statement_(statement) {}

    void bindOne(int index, std::int64_t value);
    void bindOne(int index, std::uint32_t value) { bindOne(index, std::int64_t{value}); }
    void bindOne(int index, int value) { bindOne(index, std::int64_t{value}); }
    void bindOne(int index, std::nullptr_t);
    void bindOne(int index, const std::u16string& text);
    void bindOne(int index, std::u16string_view text) { bindOne(index, std::u16string(text)); }
    void bindOne(int index, std::span<const std::byte> bytes);

    Prepared* home_;           // the destructor returns the statement to it
    sqlite3_stmt* statement_;  // null if it could not be prepared; then each step fails
};

class Connection {
public:
    explicit Connection(sqlite3* opened) : database_(opened) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    // Keeps the prepared statement and reuses it the next time.
    [[nodiscard]] Statement prepare(Sql sql);

    // One statement or several, without parameters or rows.
    [[nodiscard]] Step execute(const std::string& sql);

    // The first column of the first row, of a statement without parameters.
    [[nodiscard]] std::optional<std::int64_t> readNumber(Sql sql);

    // Gathers the changes of several calls in one transaction, so that they share one flush. Begins the transaction
    // unless it is open. `ended` is called once at its end: with Done if all changes are on the disk, otherwise after a
    // rollback.
    [[nodiscard]] Step gather(std::function<void(Step)> ended);

    // False also after a failed statement rolled the transaction back. Then `ended` has been called.
    [[nodiscard]] bool isGathering();

    // Commits the gathered changes, unless the gathering is held. Also ends the transaction of keepReading().
    void endGathering();

    // Keeps the gathering open until it is released. Then all changes are on the disk, or none.
    void holdGathering() { held_ = isGathering(); }
    void releaseGathering(bool kept);

    // Makes the following reads share one transaction. Otherwise each read begins one, which asks the host for the
    // file's size. The transaction ends before the next change.
    void keepReading();

    [[nodiscard]] std::int64_t lastInsertId() const;

    // What SQLite says about the last failure.
    [[nodiscard]] std::string lastMessage() const;

private:
    friend class Transaction;

    void endReading();
    [[nodiscard]] Step commit();
    void undo();
    [[nodiscard]] Step run(const char* sql);  // allocates nothing here, so a transaction can always be ended

    sqlite3* database_;
    bool reading_ = false;                      // a transaction is open for reads alone
    std::function<void(Step)> gatheringEnded_;  // empty while nothing is gathered
    bool held_ = false;
    std::unordered_map<const char*, Prepared> prepared_;
};

// An atomic change. The destructor rolls back what isn't committed. During a gathering it is a savepoint of that one.
class Transaction {
public:
    explicit Transaction(Connection& connection);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    // Done if it has begun. Otherwise change nothing, since each statement would be committed separately.
    [[nodiscard]] Step begun() const { return begun_; }

    // Done when the change is on the disk or gathered. Otherwise nothing is changed, nor will be at the next start.
    [[nodiscard]] Step commit();

private:
    Connection& connection_;
    bool isPart_;
    Step begun_;
};

}  // namespace platform::database

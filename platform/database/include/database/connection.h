// connection.h - executes the statements of one SQLite database file, and groups its changes into transactions. Only
// this component includes sqlite3.h.
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

// The result of a step of a statement. After Full, NoMemory and Failed the statement has changed nothing.
enum class Step {
    Row,   // a row can be read
    Done,  // no more rows, and the change is made
    Full,  // the disk is full
    NoMemory,
    Failed,  // any other failure, for example a read error or a constraint that forbids the change
};

class Connection;

// A defect of clang 14: if a C++ statement calls a consteval function, its temporary objects, such as a Statement, live
// until the end of the block. So the constructor is constexpr for clang.
#ifdef __clang__
#define SQL_LITERAL constexpr
#else
#define SQL_LITERAL consteval
#endif

// The text of an SQL statement. The text must be a literal, because a connection finds its prepared statements by the
// address of the text.
class Sql {
public:
    template <std::size_t Size>
    // NOLINTNEXTLINE(google-explicit-constructor): callers pass a literal
    SQL_LITERAL Sql(const char (&text)[Size]) : text_(text), size_(static_cast<int>(Size - 1))
    {
    }
    [[nodiscard]] const char* text() const { return text_; }
    [[nodiscard]] int size() const { return size_; }

private:
    const char* text_;
    int size_;
};

// Prepared statements that aren't in use at present. All of them have the same SQL text.
using Prepared = std::vector<sqlite3_stmt*>;

// A prepared statement, borrowed from its connection for one use.
class Statement {
public:
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&&) = delete;
    ~Statement();

    // Binds the parameters in their order: whole numbers, texts, bytes, nullptr for NULL. Texts are copied. Bytes
    // aren't copied, so they must stay valid until the last call of step().
    template <class... Values>
    Statement& bind(const Values&... values)
    {
        int index = 0;
        (bindOne(++index, values), ...);
        return *this;
    }

    [[nodiscard]] Step step();

    // The following functions read the row that step() found. Columns are numbered from 0. Bytes are valid until the
    // next call of step() or the destruction of the Statement.
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
    sqlite3_stmt* statement_;  // null if preparing failed; each step fails in that case
};

class Connection {
public:
    explicit Connection(sqlite3* opened) : database_(opened) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    // Returns a prepared statement with this text. When the Statement is destroyed, the connection keeps the prepared
    // statement for later calls.
    [[nodiscard]] Statement prepare(Sql sql);

    // Executes one or more statements without parameters, and ignores rows that they return. Stops at the first
    // statement that fails. Returns Done if none failed.
    [[nodiscard]] Step execute(const std::string& sql);

    // Returns the first column of the first row of a statement without parameters. Returns nothing if there is no row
    // or the statement fails.
    [[nodiscard]] std::optional<std::int64_t> readNumber(Sql sql);

    // Begins a transaction for the changes of several calls, so that one flush writes all of them to the disk. Until
    // the transaction ends, these changes are pending. `ended` is called once, at the end of the transaction. Its
    // argument is Done if all changes are on the disk, and another value if they were rolled back. If such a
    // transaction is open already, the call returns Done and ignores `ended`.
    [[nodiscard]] Step gather(std::function<void(Step)> ended);

    // Returns whether the transaction of gather() is open. If a failed statement has rolled back this transaction,
    // calls `ended` and returns false.
    [[nodiscard]] bool isGathering();

    // Commits the pending changes of gather(), unless holdGathering() prevents this. Also ends the transaction of
    // keepReading().
    void endGathering();

    // Between holdGathering() and releaseGathering(), endGathering() doesn't commit. If `kept` is true,
    // releaseGathering() commits all pending changes. Otherwise it rolls back all of them. If no transaction of
    // gather() is open, holdGathering() and releaseGathering() do nothing.
    void holdGathering() { held_ = isGathering(); }
    void releaseGathering(bool kept);

    // Makes the following reads share one transaction. Without it, each read begins a transaction of its own, and
    // SQLite asks the kernel for the file's size each time. The next gather() or endGathering() ends the shared
    // transaction. One of the two must be called before the next change. Does nothing while a transaction of gather()
    // is open.
    void keepReading();

    [[nodiscard]] std::int64_t lastInsertId() const;

    // SQLite's message about the last failure.
    [[nodiscard]] std::string lastMessage() const;

private:
    friend class Transaction;

    void endReading();
    [[nodiscard]] Step commit();
    void undo();
    // Executes `sql` without creating a Statement. Creating one could throw std::bad_alloc, but ending a transaction
    // must always be possible.
    [[nodiscard]] Step run(const char* sql);

    sqlite3* database_;
    bool reading_ = false;                      // a transaction is open for reads alone
    std::function<void(Step)> gatheringEnded_;  // empty while no transaction of gather() is open
    bool held_ = false;
    std::unordered_map<const char*, Prepared> prepared_;
};

// An atomic change. The destructor rolls back a change that wasn't committed. If a transaction of gather() is open, the
// change is a savepoint of that transaction.
class Transaction {
public:
    explicit Transaction(Connection& connection);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    // Returns Done if the transaction has begun. After any other result the caller must change nothing, because SQLite
    // would commit each statement separately.
    [[nodiscard]] Step begun() const { return begun_; }

    // Returns Done if the change is on the disk, or if it is pending in the transaction of gather(). Otherwise the
    // change isn't made, and the next start of the program doesn't make it either.
    [[nodiscard]] Step commit();

private:
    Connection& connection_;
    bool isPart_;
    Step begun_;
};

}  // namespace platform::database

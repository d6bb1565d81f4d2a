// connection.h - one SQLite database file: its statements, its transactions. No other room includes SQLite.
//
// A connection serves one thread at a time; device_database.h lends it out under a lock.
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

// How a statement got on. What is not done leaves the database as it was.
enum class Step {
    Row,   // a row is there to be read
    Done,  // no more rows; the change is made
    Full,  // no room on the host's disk
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

// The text of a statement. It is a literal, so that a connection finds what it has prepared by the address alone.
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

// The prepared statements of one text that wait for their next use.
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

    // Of the row that step() found, columns from 0. Bytes stay good until the next step.
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

    Prepared* home_;           // where it goes back to
    sqlite3_stmt* statement_;  // null: it could not be prepared, and each step fails
};

class Connection {
public:
    explicit Connection(sqlite3* opened) : database_(opened) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    // Statements are kept prepared, so the same text costs nothing the next time.
    [[nodiscard]] Statement prepare(Sql sql);

    // One statement or several, without parameters or rows.
    [[nodiscard]] Step execute(const std::string& sql);

    // The first column of the first row, of a statement without parameters.
    [[nodiscard]] std::optional<std::int64_t> readNumber(Sql sql);

    // Gathers the changes of several calls in one transaction, so that they share one flush: begins it unless
    // it is open. `ended` hears once how it ended: Done, all of it is on the disk; otherwise all is undone.
    [[nodiscard]] Step gather(std::function<void(Step)> ended);

    // False also when a failed statement has undone the transaction, which `ended` then has heard.
    [[nodiscard]] bool isGathering();

    // Puts what was gathered on the disk; nothing if nothing was, or if it is held. Ends a reading, too.
    void endGathering();

    // What is gathered from now on stays open until it is released: then all of it is on the disk, or nothing.
    void holdGathering() { held_ = isGathering(); }
    void releaseGathering(bool kept);

    // Lets the reads that follow share one transaction, since each that begins its own asks the host for the file's
    // size. Nobody else changes the file meanwhile. It ends before the next change.
    void keepReading();

    [[nodiscard]] std::int64_t lastInsertId() const;

    // What SQLite says about the last failure.
    [[nodiscard]] std::string lastMessage() const;

private:
    friend class Transaction;

    void endReading();
    [[nodiscard]] Step commit();
    void undo();
    [[nodiscard]] Step run(const char* sql);  // takes no memory of ours, so that what was begun always comes to an end

    sqlite3* database_;
    bool reading_ = false;                      // a transaction is open for reads alone
    std::function<void(Step)> gatheringEnded_;  // empty while nothing is gathered
    bool held_ = false;
    std::unordered_map<const char*, Prepared> prepared_;
};

// All or nothing: what isn't committed when it ends is undone. Amid a gathering it is a part of that one.
class Transaction {
public:
    explicit Transaction(Connection& connection);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    // Done if it has begun. Nothing may be changed otherwise: each statement would be on the disk by itself.
    [[nodiscard]] Step begun() const { return begun_; }

    // Done when all of it is on the disk, or gathered. Otherwise nothing of it is there, at the next start either.
    [[nodiscard]] Step commit();

private:
    Connection& connection_;
    bool isPart_;
    Step begun_;
};

}  // namespace platform::database

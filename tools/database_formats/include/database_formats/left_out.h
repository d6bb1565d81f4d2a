// left_out.h - what a reader can't bring into a database as the file has it, counted by name.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace database_formats {

// A name out of a file as a message may show it: 40 bytes of it, without control characters.
[[nodiscard]] std::string shownName(std::string_view name);

// How often each name came.
class NameCount {
public:
    void add(std::string_view name);

    [[nodiscard]] std::size_t count() const { return count_; }

    // "PHOTO 10, X-NICK 2"
    [[nodiscard]] std::string text() const;

private:
    std::size_t count_ = 0;
    std::map<std::string, std::size_t, std::less<>> names_;
};

class LeftOut {
public:
    // What the database has no place for.
    void add(std::string_view name) { names_.add(name); }
    // A field whose text is taken, though the file doesn't tell its character set and it had to be guessed.
    void addGuess(std::string_view name) { guesses_.add(name); }

    [[nodiscard]] std::size_t count() const { return names_.count(); }
    [[nodiscard]] std::size_t guesses() const { return guesses_.count(); }

    // "12 fields were left out: PHOTO 10, X-NICK 2"
    [[nodiscard]] std::string sentence() const;
    // "2 fields name no character set and were read as Windows-1252: N 1, NOTE 1"
    [[nodiscard]] std::string guessSentence() const;

private:
    NameCount names_;
    NameCount guesses_;
};

}  // namespace database_formats

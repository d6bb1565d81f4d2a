// left_out.h - counts the fields of a file that a reader couldn't import, or not for certain.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace database_formats {

// A name from a file, as a message can show it: its first 40 bytes, without control characters.
std::string shownName(std::string_view name);

// Counts how often each name was added.
class NameCount {
public:
    void add(std::string_view name);

    std::size_t count() const { return count_; }

    // "PHOTO 10, X-NICK 2"
    std::string text() const;

private:
    std::size_t count_ = 0;
    std::map<std::string, std::size_t, std::less<>> names_;
};

class LeftOut {
public:
    // A field that no property of the record can hold.
    void add(std::string_view name) { names_.add(name); }
    // A field that was imported, but whose character set had to be guessed, because the file doesn't name it.
    void addGuess(std::string_view name) { guesses_.add(name); }

    std::size_t count() const { return names_.count(); }
    std::size_t guesses() const { return guesses_.count(); }

    // "12 fields were left out: PHOTO 10, X-NICK 2"
    std::string sentence() const;
    // "2 fields name no character set and were read as Windows-1252: N 1, NOTE 1"
    std::string guessSentence() const;

private:
    NameCount names_;
    NameCount guesses_;
};

}  // namespace database_formats

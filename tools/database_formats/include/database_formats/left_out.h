// left_out.h - counts the fields of a file that a reader couldn't import, or not for certain.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace database_formats {

// A name from a file, as a message can show it: its first 60 bytes, without control characters.
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

    // Something to say about the whole file, in a sentence without its point.
    void note(std::string sentence) { notes_.push_back(std::move(sentence)); }

    std::size_t count() const { return names_.count(); }

    // "12 fields were left out: PHOTO 10, X-NICK 2"
    std::string sentence() const;
    // All that there is to say, in sentences without their points. A guess is
    // "2 fields name no character set and were read as Windows-1252: N 1, NOTE 1".
    std::vector<std::string> sentences() const;

private:
    NameCount names_;
    NameCount guesses_;
    std::vector<std::string> notes_;
};

}  // namespace database_formats

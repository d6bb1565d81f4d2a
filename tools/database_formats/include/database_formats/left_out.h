// left_out.h - counts the fields that an import or an export left out, and the imported fields whose character set was
// guessed.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace database_formats {

// Prepares a field name that was read from an imported file for display in a message. Uses at most the first 60 bytes
// of the name. Replaces each control character by a text such as <U+001B>, so the result can be longer than 60 bytes.
std::string shownName(std::string_view name);

// Counts how often each name was added. After 30 different names, all further names are counted together as "others".
class NameCount {
public:
    void add(std::string_view name);

    std::size_t count() const { return count_; }

    // Returns a text such as "PHOTO 10, X-NICK 2".
    std::string text() const;

private:
    std::size_t count_ = 0;
    std::map<std::string, std::size_t, std::less<>> names_;
};

class LeftOut {
public:
    // Counts a field, a property or a whole item that was left out.
    void add(std::string_view name) { names_.add(name); }
    // Counts a field that was imported with a guessed character set, because the file doesn't name the character set.
    void addGuess(std::string_view name) { guesses_.add(name); }

    // Adds a message about the whole file: a sentence without its full stop.
    void note(std::string sentence) { notes_.push_back(std::move(sentence)); }

    std::size_t count() const { return names_.count(); }

    // Returns a sentence such as "12 fields were left out: PHOTO 10, X-NICK 2", without a full stop.
    std::string sentence() const;
    // Returns all messages as sentences without their full stops. One message counts the fields that were passed to
    // addGuess(), for example "2 fields name no character set and were read as Windows-1252: N 1, NOTE 1".
    std::vector<std::string> sentences() const;

private:
    NameCount names_;
    NameCount guesses_;
    std::vector<std::string> notes_;
};

}  // namespace database_formats

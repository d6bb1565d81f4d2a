// words.h - searches a text of several parts, such as the properties of a record, for some words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillbox_set {

class Words {
public:
    // The words are separated by blanks. With `ignoreCase`, a small letter equals its capital letter.
    Words(std::string_view typed, bool ignoreCase);

    bool isEmpty() const { return words_.empty(); }

    // Begins a new text and forgets the parts of the previous text.
    void begin();
    // Adds a part. Returns true if the part contains a word that no earlier part contains.
    bool add(std::u16string_view part);
    // True if the parts of the text together contain all words.
    bool areAllFound() const { return found_ == words_.size(); }

private:
    bool ignoreCase_;
    std::vector<std::u16string> words_;
    std::vector<bool> isFound_;
    std::size_t found_ = 0;
    std::u16string folded_;
};

}  // namespace quillbox_set

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

    // Begins a new text, in which no word is found yet.
    void begin();
    // Adds a part of the text. Returns true if this part contains a searched word that no earlier part of the text
    // contains.
    bool add(std::u16string_view part);
    // True if each searched word is in some part of the text.
    bool areAllFound() const { return found_ == words_.size(); }

private:
    bool ignoreCase_;
    std::vector<std::u16string> words_;
    std::vector<bool> isFound_;
    std::size_t found_ = 0;
    std::u16string folded_;
};

}  // namespace quillbox_set

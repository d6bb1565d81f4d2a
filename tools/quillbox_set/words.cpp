#include "words.h"

#include "text/case_folding.h"
#include "text/host_name.h"

#include <algorithm>
#include <sstream>

namespace quillbox_set {

Words::Words(std::string_view typed, bool ignoreCase) : ignoreCase_(ignoreCase)
{
    std::istringstream in{std::string(typed)};
    for (std::string word; in >> word;) {
        words_.push_back(platform::text::fromUtf8(word));
        if (ignoreCase_)
            std::ranges::transform(words_.back(), words_.back().begin(), platform::text::foldCase);
    }
    begin();
}

void Words::begin()
{
    isFound_.assign(words_.size(), false);
    found_ = 0;
}

bool Words::add(std::u16string_view part)
{
    if (ignoreCase_) {
        folded_.assign(part);
        std::ranges::transform(folded_, folded_.begin(), platform::text::foldCase);
        part = folded_;
    }
    const std::size_t before = found_;
    for (std::size_t at = 0; at < words_.size(); at++) {
        if (isFound_[at] || part.find(words_[at]) == std::u16string_view::npos)
            continue;
        isFound_[at] = true;
        found_++;
    }
    return found_ != before;
}

}  // namespace quillbox_set

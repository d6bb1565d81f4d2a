// text_search.h - searches the inside of an item: the texts of records, the registry, the lines of a text file.
#pragma once

#include "archive/item_content.h"
#include "text_lines.h"
#include "words.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace quillbox_set {

class TextSearch final : public archive::ContentSink {
public:
    // Receives where the words are, as a text ("record 3: LastName, FirstName", "line 12: ...") and as a JSON object.
    using Found = std::function<void(const std::string& text, const nlohmann::ordered_json& inside)>;

    // Searches one item. `words` must exist as long as this object.
    TextSearch(Words& words, Found found);

    // Call finish() after the whole content of the item was read.
    void finish();

    bool bytes(std::span<const std::byte> piece) override { return lines_.add(piece); }
    void head(const archive::ImageReport& image) override { records_ = image.records; }
    void record(unsigned number, std::span<const CEPROPVAL> properties) override;
    bool key(const platform::registry::KeyPath& path) override;
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) override;

private:
    void line(std::u16string_view text, std::uint64_t number);

    Words& words_;
    Found found_;
    TextLines lines_;
    unsigned records_ = 0;
    std::u16string key_;
    bool keyHasAll_ = false;
};

}  // namespace quillbox_set

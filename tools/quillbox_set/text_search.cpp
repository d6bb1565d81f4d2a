#include "text_search.h"

#include "archive/record_content.h"
#include "database_formats/property_names.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include <utility>

namespace quillbox_set {

using namespace archive;
using platform::text::toUtf8;
using screen_text::onScreen;

namespace {

constexpr std::size_t ShownUnits = 120;  // the most units of a line that are printed

constexpr DWORD TypeText = 1;
constexpr DWORD TypeExpandedText = 2;
constexpr DWORD TypeSeveralTexts = 7;

// Returns the text of a registry value, with blanks in place of NULs. Empty for a value that is no text.
std::u16string textOf(DWORD type, std::span<const std::byte> data)
{
    std::u16string text;
    if (type != TypeText && type != TypeExpandedText && type != TypeSeveralTexts)
        return text;
    for (std::size_t at = 0; at + 1 < data.size(); at += 2) {
        const auto unit =
            static_cast<char16_t>(std::to_integer<unsigned>(data[at]) | std::to_integer<unsigned>(data[at + 1]) << 8);
        text += unit == 0 ? u' ' : unit;
    }
    return text;
}

}  // namespace

TextSearch::TextSearch(Words& words, Found found)
    : words_(words), found_(std::move(found)),
      lines_([this](std::u16string_view text, std::uint64_t number) { line(text, number); })
{
}

void TextSearch::finish()
{
    lines_.finish();
}

void TextSearch::line(std::u16string_view text, std::uint64_t number)
{
    words_.begin();
    words_.add(text);
    if (words_.areAllFound())
        found_("line " + std::to_string(number) + ": " + onScreen(text.substr(0, ShownUnits)), {{"line", number}});
}

// The output has the number of the record in the database. The number must be computed, because an image has the last
// record first.
void TextSearch::record(unsigned number, std::span<const CEPROPVAL> properties)
{
    words_.begin();
    std::string names;
    nlohmann::ordered_json where = nlohmann::ordered_json::array();
    for (const CEPROPVAL& property : restoredRecord(properties)) {
        if (LOWORD(property.propid) != CEVT_LPWSTR && LOWORD(property.propid) != CEVT_BLOB)
            continue;
        const std::u16string text =
            LOWORD(property.propid) == CEVT_LPWSTR
                ? std::u16string(property.val.lpwstr)
                : platform::text::fromUtf8(
                      {reinterpret_cast<const char*>(property.val.blob.lpb), property.val.blob.dwCount});
        if (!words_.add(text))
            continue;
        const std::string name = database_formats::nameOf(property.propid);
        names += (names.empty() ? "" : ", ") + name;
        where.push_back(name);
    }
    if (!words_.areAllFound())
        return;
    const unsigned shown = records_ - number + 1;
    found_("record " + std::to_string(shown) + ": " + names, {{"record", shown}, {"properties", where}});
}

bool TextSearch::key(const platform::registry::KeyPath& path)
{
    key_ = keyText(path);
    words_.begin();
    words_.add(key_);
    keyHasAll_ = words_.areAllFound();
    if (keyHasAll_)
        found_("[" + onScreen(key_) + "]", {{"key", toUtf8(key_)}});
    return true;
}

// The words can be spread over the key, the name and the text. If the key alone has all words, its values aren't
// printed.
bool TextSearch::value(std::u16string_view name, DWORD type, std::span<const std::byte> data)
{
    if (keyHasAll_)
        return true;
    words_.begin();
    words_.add(key_);
    words_.add(name);
    words_.add(textOf(type, data));
    if (words_.areAllFound())
        found_("[" + onScreen(key_) + "] \"" + onScreen(name) + "\"", {{"key", toUtf8(key_)}, {"value", toUtf8(name)}});
    return true;
}

}  // namespace quillbox_set

#include "file_type.h"

#include <algorithm>
#include <array>
#include <magic.h>
#include <string_view>

namespace quillbox_set {

namespace {

struct KnownBeginning {
    std::string_view beginning;
    std::u16string_view extension;
};

// The beginnings of texts, in small letters. libmagic recognises these types, too. But it takes milliseconds for a
// text, because it looks for hundreds of words.
constexpr std::array TextBeginnings = std::to_array<KnownBeginning>({
    {"<!doctype html", u".html"},
    {"<html", u".html"},
    {"<?xml", u".xml"},
    {"{\\rtf", u".rtf"},
    {"%pdf-", u".pdf"},
    {"begin:vcard", u".vcf"},
    {"begin:vcalendar", u".ics"},
});

// The extensions for some MIME types, by the beginning of the type. For these types libmagic has no extension or
// several extensions.
constexpr std::array TypeBeginnings = std::to_array<KnownBeginning>({
    {"application/octet-stream", u".bin"},
    {"image/jpeg", u".jpg"},
    {"image/png", u".png"},
    {"image/gif", u".gif"},
    {"image/bmp", u".bmp"},
    {"image/x-ms-bmp", u".bmp"},
    {"application/pdf", u".pdf"},
    {"application/zip", u".zip"},
    {"application/msword", u".doc"},
    {"application/vnd.ms-excel", u".xls"},
    {"application/x-dosexec", u".exe"},
    {"application/vnd.microsoft.portable-executable", u".exe"},
    {"application/gzip", u".gz"},
    {"application/x-bzip2", u".bz2"},
    {"application/x-tar", u".tar"},
    {"audio/x-wav", u".wav"},
    {"audio/mpeg", u".mp3"},
    {"audio/midi", u".mid"},
    {"text/", u".txt"},
});

template <std::size_t Rows>
const KnownBeginning* rowOf(const std::array<KnownBeginning, Rows>& rows, std::string_view text)
{
    const auto* const row =
        std::ranges::find_if(rows, [&](const KnownBeginning& each) { return text.starts_with(each.beginning); });
    return row == rows.end() ? nullptr : row;
}

std::u16string textExtension(std::span<const std::byte> head)
{
    constexpr std::size_t MostLetters = 32;
    std::string beginning;
    for (const std::byte byte : head.first(std::min(head.size(), MostLetters))) {
        const auto letter = static_cast<char>(byte);
        beginning += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    }
    const KnownBeginning* const row = rowOf(TextBeginnings, beginning);
    return std::u16string(row ? row->extension : u".txt");
}

// libmagic can name several extensions for one type, such as "jpeg/jpg/jpe/jfif". Returns the first one with three
// letters, because most extensions on a handheld have three letters. If there is none, returns the first extension.
std::string_view preferred(std::string_view several)
{
    std::string_view best = several.substr(0, several.find('/'));
    while (best.size() != 3 && several.find('/') != std::string_view::npos) {
        several.remove_prefix(several.find('/') + 1);
        if (const std::string_view next = several.substr(0, several.find('/')); next.size() == 3)
            best = next;
    }
    return best;
}

bool isExtension(std::string_view text)
{
    constexpr std::size_t MostLetters = 8;
    return !text.empty() && text.size() <= MostLetters &&
           std::ranges::all_of(text, [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); });
}

std::string_view askedFor(magic_set* library, std::span<const std::byte> head)
{
    const char* const answer = library ? magic_buffer(library, head.data(), head.size()) : nullptr;
    return answer ? answer : "";
}

}  // namespace

void FileTypes::Close::operator()(magic_set* library) const
{
    magic_close(library);
}

FileTypes::Library FileTypes::loaded(int flags)
{
    Library library(magic_open(flags));
    if (library && magic_load(library.get(), nullptr) != 0)
        library.reset();
    return library;
}

FileTypes::FileTypes()
    : texts_(loaded(MAGIC_MIME_TYPE | MAGIC_NO_CHECK_SOFT)), types_(loaded(MAGIC_MIME_TYPE)),
      extensions_(loaded(MAGIC_EXTENSION))
{
}

std::u16string FileTypes::extensionOf(std::span<const std::byte> head) const
{
    head = head.first(std::min(head.size(), HeadBytes));
    if (head.empty())
        return u".bin";
    if (askedFor(texts_.get(), head).starts_with("text/"))
        return textExtension(head);
    if (const KnownBeginning* const row = rowOf(TypeBeginnings, askedFor(types_.get(), head)))
        return std::u16string(row->extension);
    const std::string_view known = preferred(askedFor(extensions_.get(), head));
    return isExtension(known) ? u"." + std::u16string(known.begin(), known.end()) : u".bin";
}

}  // namespace quillbox_set

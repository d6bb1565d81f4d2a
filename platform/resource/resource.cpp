#include "ce/resource.h"

#include "resource/resource_file.h"
#include "text/utf.h"

#include <algorithm>
#include <cstring>

using platform::resource::currentResources;
using platform::resource::Resource;
using platform::resource::ResourceFile;
using platform::resource::ResourceKey;

namespace {

// Converts the argument of a call to a key. The argument is a number in place of an address, or the address of a text.
// A text such as "#123" also means a number.
ResourceKey keyOf(const WCHAR* name)
{
    const auto number = reinterpret_cast<UINT_PTR>(name);
    if (number <= 0xFFFF)
        return static_cast<WORD>(number);
    const std::u16string text = name;
    if (text.size() < 2 || text.size() > 6 || text[0] != u'#' ||
        text.find_first_not_of(u"0123456789", 1) != std::u16string::npos)
        return text;
    UINT value = 0;
    for (const char16_t digit : text.substr(1))
        value = value * 10 + static_cast<UINT>(digit - u'0');
    return value <= 0xFFFF ? ResourceKey(static_cast<WORD>(value)) : ResourceKey(text);
}

// A handle is the entry's number, counted from 1.
HRSRC handleOf(const ResourceFile& file, const Resource& entry)
{
    return reinterpret_cast<HRSRC>(static_cast<UINT_PTR>(&entry - file.entries().data()) + 1);
}

const Resource* entryOf(HRSRC handle)
{
    const ResourceFile* file = currentResources();
    const auto number = reinterpret_cast<UINT_PTR>(handle);
    if (file && number >= 1 && number <= file->entries().size())
        return &file->entries()[number - 1];
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

// Returns how many UTF-16 units of the text fit into a buffer of `characters` units. If the cut would split a surrogate
// pair, the number is one lower.
std::size_t fitting(std::span<const std::byte> text, std::size_t characters)
{
    const std::size_t all = text.size() / sizeof(WCHAR);
    if (characters >= all)
        return all;
    WCHAR next = 0;
    std::memcpy(&next, text.data() + characters * sizeof next, sizeof next);
    return platform::text::isLowSurrogate(next) && characters > 0 ? characters - 1 : characters;
}

}  // namespace

HRSRC FindResourceW(HMODULE, const WCHAR* name, const WCHAR* type)
{
    const ResourceFile* file = currentResources();
    if (!file) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    const ResourceKey typeKey = keyOf(type);
    if (const Resource* entry = file->find(typeKey, keyOf(name)))
        return handleOf(*file, *entry);
    SetLastError(file->hasType(typeKey) ? ERROR_RESOURCE_NAME_NOT_FOUND : ERROR_RESOURCE_TYPE_NOT_FOUND);
    return nullptr;
}

HGLOBAL LoadResource(HMODULE, HRSRC resource)
{
    const Resource* entry = entryOf(resource);
    return entry ? entry->bytes.data() : nullptr;
}

DWORD SizeofResource(HMODULE, HRSRC resource)
{
    const Resource* entry = entryOf(resource);
    return entry ? static_cast<DWORD>(entry->bytes.size()) : 0;
}

LONG_PTR LoadStringW(HINSTANCE, UINT id, WCHAR* buffer, int characters)
{
    const ResourceFile* file = currentResources();
    const std::optional<std::span<const std::byte>> text = file ? file->findText(id) : std::nullopt;
    if (!text) {
        if (buffer && characters > 0)
            buffer[0] = 0;
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return 0;
    }
    if (!buffer)
        return reinterpret_cast<LONG_PTR>(text->data());
    if (characters <= 0) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    const std::size_t copied = fitting(*text, static_cast<std::size_t>(characters) - 1);
    std::memcpy(buffer, text->data(), copied * sizeof(WCHAR));
    buffer[copied] = 0;
    return static_cast<LONG_PTR>(copied);
}

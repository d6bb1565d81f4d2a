#include "resource/resource_file.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace platform::resource {

namespace {

// Every file begins with an empty entry, of type 0 and name 0.
constexpr std::array<std::uint8_t, 16> EmptyEntryHead = {0, 0, 0, 0, 0x20, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0};
constexpr std::size_t EmptyEntryBytes = 32;
constexpr std::size_t HeaderTailBytes = 16;  // version, flags, language, version, characteristics
constexpr std::size_t EntryAlignment = 4;
constexpr WORD OrdinalMark = 0xFFFF;
constexpr UINT TextsPerBlock = 16;

std::size_t aligned(std::size_t offset)
{
    return (offset + EntryAlignment - 1) / EntryAlignment * EntryAlignment;
}

char16_t folded(char16_t unit)
{
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

bool sameKey(const ResourceKey& left, const ResourceKey& right)
{
    if (left.index() != right.index())
        return false;
    if (const WORD* number = std::get_if<WORD>(&left))
        return *number == std::get<WORD>(right);
    return std::ranges::equal(std::get<std::u16string>(left), std::get<std::u16string>(right), {}, folded, folded);
}

// Reads bytes in order, from an offset on. A read beyond the end of the bytes returns false.
class Reader {
public:
    Reader(std::span<const std::byte> bytes, std::size_t offset) : bytes_(bytes), offset_(offset) {}

    [[nodiscard]] std::size_t offset() const { return offset_; }

    template <class Number>
    bool read(Number& number)
    {
        if (offset_ > bytes_.size() || bytes_.size() - offset_ < sizeof number)
            return false;
        std::memcpy(&number, bytes_.data() + offset_, sizeof number);
        offset_ += sizeof number;
        return true;
    }

    bool readKey(ResourceKey& key)
    {
        WORD unit = 0;
        if (!read(unit))
            return false;
        if (unit == OrdinalMark) {
            key = WORD{0};
            return read(std::get<WORD>(key));
        }
        std::u16string text;
        for (; unit != 0; read(unit)) {
            text.push_back(static_cast<char16_t>(unit));
            if (bytes_.size() - offset_ < sizeof unit)
                return false;
        }
        key = std::move(text);
        return true;
    }

private:
    std::span<const std::byte> bytes_;
    std::size_t offset_;
};

// Reads the entry at `offset` and advances `offset` to the next entry.
std::optional<Resource> readEntry(std::span<const std::byte> file, std::size_t& offset)
{
    Reader reader(file, offset);
    DWORD dataBytes = 0;
    DWORD headerBytes = 0;
    Resource entry;
    if (!reader.read(dataBytes) || !reader.read(headerBytes) || !reader.readKey(entry.type) ||
        !reader.readKey(entry.name))
        return std::nullopt;

    const std::size_t namesEnd = aligned(reader.offset() - offset);
    if (headerBytes != namesEnd + HeaderTailBytes || headerBytes > file.size() - offset ||
        dataBytes > file.size() - offset - headerBytes)
        return std::nullopt;

    entry.bytes = file.subspan(offset + headerBytes, dataBytes);
    offset = aligned(offset + headerBytes + dataBytes);
    return entry;
}

std::optional<ResourceFile>& processResources()
{
    static std::optional<ResourceFile> resources;
    return resources;
}

}  // namespace

std::optional<ResourceFile> ResourceFile::parse(std::span<const std::byte> file)
{
    if (file.size() < EmptyEntryBytes || std::memcmp(file.data(), EmptyEntryHead.data(), EmptyEntryHead.size()) != 0)
        return std::nullopt;

    ResourceFile result;
    std::size_t offset = EmptyEntryBytes;
    while (offset < file.size()) {
        std::optional<Resource> entry = readEntry(file, offset);
        if (!entry)
            return result;
        result.entries_.push_back(std::move(*entry));
    }
    result.whole_ = true;
    return result;
}

bool ResourceFile::hasType(const ResourceKey& type) const
{
    return std::ranges::any_of(entries_, [&](const Resource& entry) { return sameKey(entry.type, type); });
}

const Resource* ResourceFile::find(const ResourceKey& type, const ResourceKey& name) const
{
    const auto found = std::ranges::find_if(
        entries_, [&](const Resource& entry) { return sameKey(entry.type, type) && sameKey(entry.name, name); });
    return found == entries_.end() ? nullptr : &*found;
}

std::optional<std::span<const std::byte>> ResourceFile::findText(UINT id) const
{
    constexpr WORD StringBlocks = 6;
    if (id > 0xFFFF)
        return std::nullopt;
    const Resource* block = find(StringBlocks, static_cast<WORD>(id / TextsPerBlock + 1));
    if (!block)
        return std::nullopt;

    std::size_t offset = 0;
    for (UINT skipped = 0;; ++skipped) {
        Reader reader(block->bytes, offset);
        WORD characters = 0;
        if (!reader.read(characters))
            return std::nullopt;
        const std::size_t textBytes = characters * sizeof(WCHAR);
        if (textBytes > block->bytes.size() - reader.offset())
            return std::nullopt;
        if (skipped == id % TextsPerBlock)
            return characters ? std::optional(block->bytes.subspan(reader.offset(), textBytes)) : std::nullopt;
        offset = reader.offset() + textBytes;
    }
}

bool setResources(std::span<const std::byte> file)
{
    const bool onBoundary = reinterpret_cast<std::uintptr_t>(file.data()) % EntryAlignment == 0;
    processResources() = onBoundary ? ResourceFile::parse(file) : std::nullopt;
    return processResources() && processResources()->isWhole();
}

const ResourceFile* currentResources()
{
    const std::optional<ResourceFile>& resources = processResources();
    return resources ? &*resources : nullptr;
}

std::span<const std::byte> resourceAt(const void* address)
{
    const ResourceFile* resources = currentResources();
    if (!resources)
        return {};
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    for (const Resource& entry : resources->entries()) {
        const auto first = reinterpret_cast<std::uintptr_t>(entry.bytes.data());
        if (wanted >= first && wanted - first < entry.bytes.size())
            return entry.bytes.subspan(wanted - first);
    }
    return {};
}

}  // namespace platform::resource

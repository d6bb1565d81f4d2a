#include "menu_resource.h"

#include "window/byte_reader.h"

namespace platform::window {

namespace {

constexpr WORD FlagGrayed = 1;
constexpr WORD FlagDisabled = 2;
constexpr WORD FlagPopup = 0x10;
constexpr WORD FlagEnd = 0x80;
constexpr int MostLevels = 16;

// Reads one level of the menu, up to the item that is marked as the last of its level. The items of a popup follow the
// popup directly.
std::vector<MenuItem> readLevel(ByteReader& reader, int levels)
{
    std::vector<MenuItem> items;
    WORD flags = 0;
    while (!reader.failed() && !(flags & FlagEnd)) {
        flags = reader.word();
        MenuItem item;
        item.enabled = !(flags & (FlagGrayed | FlagDisabled));
        if (!(flags & FlagPopup))
            item.id = reader.word();
        item.text = reader.text();
        if (flags & FlagPopup) {
            if (levels == 1)
                reader.skip(static_cast<std::size_t>(-1));
            else
                item.items = readLevel(reader, levels - 1);
        } else {
            item.separator = item.id == 0 && item.text.empty();
        }
        items.push_back(std::move(item));
    }
    return items;
}

}  // namespace

std::optional<std::vector<MenuItem>> readMenu(std::span<const std::byte> bytes)
{
    ByteReader reader(bytes);
    const WORD version = reader.word();
    const WORD headerBytes = reader.word();
    if (version != 0 || headerBytes != 0)
        return std::nullopt;
    std::vector<MenuItem> items = readLevel(reader, MostLevels);
    return reader.failed() ? std::nullopt : std::optional(std::move(items));
}

}  // namespace platform::window

// accessible_names.h - what a screen reader says of pictures that carry a meaning: the toolbar's buttons and
// the tree's images, by the number of their bitmap and their cell in it. The program's own texts have none.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quillbox {

struct AccessibleName {
    std::uint16_t bitmap;
    int cell;
    std::u16string_view text;
};

inline constexpr std::array<AccessibleName, 23> AccessibleNames = {{
    {101, 0, u"nothing marked"},
    {101, 1, u"some marked"},
    {101, 2, u"nothing marked"},
    {101, 3, u"some marked"},
    {101, 4, u"nothing marked"},
    {101, 5, u"some marked"},
    {101, 6, u"file, not marked"},
    {101, 7, u"file, marked"},
    {101, 8, u"file in ROM, can't be marked"},
    {101, 9, u"folder, nothing marked"},
    {101, 10, u"folder, some marked"},
    {101, 11, u"database, not marked"},
    {101, 12, u"database, marked"},
    {101, 13, u"folder, not marked"},
    {101, 14, u"folder, marked"},
    {101, 15, u"not marked"},
    {101, 16, u"marked"},
    {101, 17, u"device"},
    {106, 0, u"Mark"},
    {106, 1, u"Unmark"},
    {106, 2, u"Full backup"},
    {106, 3, u"Filter"},
    {106, 4, u"Options"},
}};

// Empty if the cell has no name.
[[nodiscard]] constexpr std::u16string_view accessibleName(std::uint16_t bitmap, int cell)
{
    for (const AccessibleName& name : AccessibleNames) {
        if (name.bitmap == bitmap && name.cell == cell)
            return name.text;
    }
    return {};
}

}  // namespace quillbox

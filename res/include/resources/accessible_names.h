// accessible_names.h - what a screen reader or a tip says where the program itself has no text: for the pictures of the
// toolbar and of the tree, which are named by the number of their bitmap and their cell in that, and for some controls.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quillbox {

// The check state that an image of the tree shows.
enum class ShownMark {
    None,  // a toolbar button, or an item that can't be marked
    Unmarked,
    PartlyMarked,
    Marked,
};

struct AccessibleName {
    std::uint16_t bitmap;
    int cell;
    std::u16string_view text;
    ShownMark mark = ShownMark::None;
    std::u16string_view tip = {};  // what a tip says in addition to the text
};

inline constexpr std::array<AccessibleName, 23> AccessibleNames = {{
    {101, 0, u"nothing marked", ShownMark::Unmarked},
    {101, 1, u"some marked", ShownMark::PartlyMarked},
    {101, 2, u"nothing marked", ShownMark::Unmarked},
    {101, 3, u"some marked", ShownMark::PartlyMarked},
    {101, 4, u"nothing marked", ShownMark::Unmarked},
    {101, 5, u"some marked", ShownMark::PartlyMarked},
    {101, 6, u"file, not marked", ShownMark::Unmarked},
    {101, 7, u"file, marked", ShownMark::Marked},
    {101, 8, u"file in ROM, can't be marked", ShownMark::None,
     u"This file is in ROM. It is a part of the device, and a backup doesn't contain it."},
    {101, 9, u"folder, nothing marked", ShownMark::Unmarked},
    {101, 10, u"folder, some marked", ShownMark::PartlyMarked},
    {101, 11, u"database, not marked", ShownMark::Unmarked},
    {101, 12, u"database, marked", ShownMark::Marked},
    {101, 13, u"folder, not marked", ShownMark::Unmarked},
    {101, 14, u"folder, marked", ShownMark::Marked},
    {101, 15, u"not marked", ShownMark::Unmarked},
    {101, 16, u"marked", ShownMark::Marked},
    {101, 17, u"device"},
    {106, 0, u"Mark", ShownMark::None,
     u"Marks all files in the selected folder and below it for the next backup of selected items"},
    {106, 1, u"Unmark", ShownMark::None, u"Unmarks all files in the selected folder and below it"},
    {106, 2, u"Full backup"},
    {106, 3, u"Filter"},
    {106, 4, u"Options"},
}};

// A control of the window with that caption. The nearest text beside it is its name, unless there is one here.
struct ControlName {
    std::u16string_view caption;
    int id;
    std::u16string_view name;   // empty: as without this row
    std::u16string_view group;  // what the control belongs to; empty: nothing, or the group box around it
};

inline constexpr std::array<ControlName, 7> ControlNames = {{
    {u"KORV Quillbox", 102, u"Items on the device", u""},
    {u"File filter", 1015, u"Extensions", u"Show only files with these extensions"},
    {u"File filter", 1016, u"New extension", u"Show only files with these extensions"},
    {u"File filter", 1021, u"", u"Hide files with these attributes"},
    {u"File filter", 1026, u"", u"Hide files with these attributes"},
    {u"File filter", 1027, u"", u"Hide files with these attributes"},
    {u"File filter", 1028, u"", u"Hide files with these attributes"},
}};

[[nodiscard]] constexpr ControlName findControlName(std::u16string_view caption, int id)
{
    for (const ControlName& name : ControlNames) {
        if (name.caption == caption && name.id == id)
            return name;
    }
    return {caption, id, {}, {}};
}

// An empty name without a mark if the cell has none.
[[nodiscard]] constexpr AccessibleName findAccessibleName(std::uint16_t bitmap, int cell)
{
    for (const AccessibleName& name : AccessibleNames) {
        if (name.bitmap == bitmap && name.cell == cell)
            return name;
    }
    return {bitmap, cell, {}};
}

[[nodiscard]] constexpr std::u16string_view accessibleName(std::uint16_t bitmap, int cell)
{
    return findAccessibleName(bitmap, cell).text;
}

[[nodiscard]] constexpr std::u16string_view tipOfPicture(std::uint16_t bitmap, int cell)
{
    return findAccessibleName(bitmap, cell).tip;
}

[[nodiscard]] constexpr ShownMark shownMark(std::uint16_t bitmap, int cell)
{
    return findAccessibleName(bitmap, cell).mark;
}

// A folder in the tree, which the commands for folders mark and unmark.
[[nodiscard]] constexpr bool isFolderThatTakesMarks(std::uint16_t bitmap, int cell)
{
    return bitmap == 101 && (cell == 9 || cell == 10);
}

}  // namespace quillbox

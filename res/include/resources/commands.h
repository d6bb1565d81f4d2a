// commands.h - the numbers of the menu items and toolbar buttons in quillbox.rc for which the display has shortcuts,
// tips and clicks of its own.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quillbox {

inline constexpr std::uint16_t MarkFolder = 500;
inline constexpr std::uint16_t UnmarkFolder = 501;
inline constexpr std::uint16_t PartialRestore = 40007;

struct Shortcut {
    std::uint16_t command;
    std::u16string_view keys;  // as the toolkit parses them
};

// A toolbar button shows the keys of the menu item that does the same.
inline constexpr std::array<Shortcut, 7> Shortcuts = {{
    {MarkFolder, u"Ctrl+M"},
    {UnmarkFolder, u"Ctrl+Shift+M"},
    {502, u"Ctrl+B"},
    {40003, u"Ctrl+B"},
    {40005, u"Ctrl+Shift+B"},
    {40006, u"Ctrl+R"},
    {PartialRestore, u"Ctrl+Shift+R"},
}};

// Empty for a command without one.
[[nodiscard]] constexpr std::u16string_view shortcutOf(std::uint16_t command)
{
    for (const Shortcut& shortcut : Shortcuts) {
        if (shortcut.command == command)
            return shortcut.keys;
    }
    return {};
}

}  // namespace quillbox

// menu_resource.h - reads a menu in the format that the resource compiler writes.
#pragma once

#include "controls/bands_display.h"

#include <optional>
#include <span>

namespace platform::window {

// Returns the items of the menu's top level. Returns nothing if the bytes end before the menu does, if the menu has the
// extended format, or if it has more than 16 levels.
[[nodiscard]] std::optional<std::vector<MenuItem>> readMenu(std::span<const std::byte> bytes);

}  // namespace platform::window

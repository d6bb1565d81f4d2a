// menu_resource.h - a menu as the resource compiler writes it.
#pragma once

#include "controls/bands_display.h"

#include <optional>
#include <span>

namespace platform::window {

// The items of the menu's top level. Nothing if the bytes end before the menu does, if it has the extended format, or
// if its popups are nested more than 16 levels deep.
[[nodiscard]] std::optional<std::vector<MenuItem>> readMenu(std::span<const std::byte> bytes);

}  // namespace platform::window

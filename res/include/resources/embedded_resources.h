// embedded_resources.h - the program's compiled resource file, built in.
#pragma once

#include <cstddef>
#include <span>

namespace quillbox {

// Good for the life of the process; begins on a multiple of 8.
[[nodiscard]] std::span<const std::byte> embeddedResources();

}  // namespace quillbox

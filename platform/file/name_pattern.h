// name_pattern.h - does a name match a search pattern?
#pragma once

#include <string_view>

namespace platform::file {

// `*` stands for any run, the empty one too, `?` for one character; "*.*" matches every name, also one
// without a point. Without case.
[[nodiscard]] bool matchesPattern(std::u16string_view name, std::u16string_view pattern);

}  // namespace platform::file

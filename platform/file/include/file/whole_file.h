// whole_file.h - makes a file that appears at its path only when it has all of its content. The platform's own calls
// don't offer this.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace platform::file {

// Makes a file with this content at `path`, where nothing may exist before. If the call fails, or the process ends
// during the call, the call leaves no file at `path`. Can be called on any thread.
// 0, or the error: 50 the file system can't do it or the card has a capacity, 80 and 183 something exists there,
// otherwise those of CreateFileW and WriteFile.
[[nodiscard]] DWORD makeWholeFile(std::u16string_view path, std::span<const std::byte> content);

}  // namespace platform::file

// file_move.h - gives a file another path. The platform's own calls don't offer this.
#pragma once

#include "ce/types.h"

#include <string_view>

namespace platform::file {

// Moves a file to another path of the device. Both paths must be on the same mounted folder, and this process must not
// have the file open. With `replace`, the move atomically replaces a file at `to`, if that file may be deleted. The
// moved file gets the owner, group and mode of the replaced file. Can be called on any thread.
// 0, or the error: 80 and 183 `to` exists, 17 `to` is on another mounted folder or file system, otherwise those of
// DeleteFileW for either path.
[[nodiscard]] DWORD moveFile(std::u16string_view from, std::u16string_view to, bool replace);

}  // namespace platform::file

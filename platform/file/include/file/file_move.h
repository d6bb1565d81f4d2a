// file_move.h - gives a file another path, which the platform's own calls don't offer.
#pragma once

#include "ce/types.h"

#include <string_view>

namespace platform::file {

// Moves a file to another path of the device. Both paths are on one mounted folder, and this process has the file not
// open. With `replace`, a file at `to` is replaced atomically, if it could be deleted, and the moved file takes its
// owner, group and mode. Any thread.
// 0, or the error: 80 and 183 `to` exists, 17 `to` is on another mounted folder or file system, otherwise those of
// DeleteFileW for either path.
[[nodiscard]] DWORD moveFile(std::u16string_view from, std::u16string_view to, bool replace);

}  // namespace platform::file

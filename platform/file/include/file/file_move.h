// file_move.h - moves a file to another path of the device. The calls of ce/file.h can't do this.
#pragma once

#include "ce/types.h"

#include <string_view>

namespace platform::file {

// Moves a file to another path of the device. With `replace`, the move atomically replaces a file at `to`, if
// DeleteFileW could delete that file. Before the move, the moved file gets the owner, group and mode of the replaced
// file, as far as this user may set them. Can be called on any thread.
// Returns 0 or the error: 183 if something exists at `to` and `replace` is false, 17 if the paths are on different
// mounted folders or file systems, 32 if this process has one of the files open, 112 if there is no space for the
// directory entry, otherwise an error of DeleteFileW for one of the paths.
[[nodiscard]] DWORD moveFile(std::u16string_view from, std::u16string_view to, bool replace);

}  // namespace platform::file

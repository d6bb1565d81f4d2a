// whole_file.h - makes a file that appears at its path only when it has all of its content. The calls of ce/file.h
// can't do this.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace platform::file {

// Makes a file with this content at `path`, where nothing may exist before. If the call fails, it leaves no file at
// `path`. If the process ends during the call, either the whole file is at `path` or nothing. Can be called on any
// thread.
// Returns 0 or the error: 183 if something exists at `path`, 50 if the path is in a mounted folder whose size is
// limited by Mount::capacity or if the file system can't make files without a name (O_TMPFILE), otherwise an error of
// CreateFileW or WriteFile.
[[nodiscard]] DWORD makeWholeFile(std::u16string_view path, std::span<const std::byte> content);

}  // namespace platform::file

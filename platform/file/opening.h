// opening.h - opens, makes and replaces files by their path. Checks that the access and sharing of a new handle don't
// conflict with other handles of the file, or with other processes that use the file.
#pragma once

#include "device_path.h"
#include "open_file.h"

#include "ce/types.h"

#include <memory>

namespace platform::file {

struct Opened {
    DWORD error = 0;
    bool existed = false;
    std::shared_ptr<OpenFile> file;  // null on error
    bool isRomModule = false;        // the call failed, because nobody may read a module in ROM
    bool isOpenHere = false;         // the call failed, because a handle of this process forbids it
    bool isUnsure = false;           // the file is in use, perhaps only because another thread opens it
};

[[nodiscard]] Opened openFile(const HostPath& path, const Sharing& sharing, DWORD creation);

}  // namespace platform::file
